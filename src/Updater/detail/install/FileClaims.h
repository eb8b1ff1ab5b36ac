#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/InstallationPlan.h>

#include <functional>
#include <unordered_set>

namespace vo::updater {
class AdvertisedFileListing;
class AdvertisedPackageListing;
class InstalledPackageListing;
class PackageDifferences;
} // namespace vo::updater

namespace vo::updater::detail {

class FileOwners;

/// Whose the files on disk are that stand where a release is going to write or to remove some.
struct FileClaims
{
    VoDeque<VoFilePath> foreign;                    ///< Nobody's, with another content than the release's.
    VoDeque<VoFilePath> adopted;                    ///< Nobody's, with the release's content.
    std::unordered_set<VoUUID> adoptedIDs;          ///< The IDs of the release's files for those.
    VoDeque<InstallationPlan::OwnedFile> conflicts; ///< Another package's.
    VoDeque<InstallationPlan::OwnedFile> kept;      ///< Another package's as well, and no longer the release's.
};

/// Looks at the places of all added, modified and removed files; reads those that nobody owns and that may be equal.
/// `installed` is the release before, or null. A place that both that release and another package own is no conflict
/// while both mean the same content.
/// @throws VoFileException when the system does not let one look
FileClaims FindClaims(const PackageDifferences& differences, const InstalledPackageListing* installed,
                      const AdvertisedPackageListing& advertised,
                      const std::function<VoFilePath(const AdvertisedFileListing&)>& placeOf, FileOwners& owners);

} // namespace vo::updater::detail
