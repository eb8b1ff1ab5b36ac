#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/files/FileCheck.h>

#include <optional>
#include <vector>

namespace vo::updater {
class AdvertisedPackageListing;
class InstalledPackageListing;
} // namespace vo::updater

namespace vo::updater::detail {

/// A link of a release at its place on disk, or the copy of a file that stands for it (LinksAreCopies).
struct LinkPlace
{
    VoFilePath place;
    VoString to;                        ///< Where the link leads, with backslashes; empty for a copy.
    std::optional<ExpectedFile> copy{}; ///< The copy; none for a link.
    VoFilePath source{};                ///< Place of the file that is copied.
};

/// The links of a release that is to be installed. Its paths are safe.
std::vector<LinkPlace> LinkPlacesOf(const AdvertisedPackageListing& advertised, const VoDirectoryPath& directory);
/// Those of an installed one; without those in whose places it has files.
std::vector<LinkPlace> LinkPlacesOf(const InstalledPackageListing& installed);

/// Whether the link is there, or the copy, which is read.
/// @throws VoFileException when the system does not let one look
bool IsInPlace(const LinkPlace& link);
/// Whether what is there may be removed as ours: some link, or in place of a copy some file. Throws as IsInPlace.
bool IsReplaceable(const LinkPlace& link);

} // namespace vo::updater::detail
