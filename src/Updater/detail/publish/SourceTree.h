#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/files/FileStamp.h>

#include <functional>
#include <optional>
#include <vector>

namespace vo::updater {
class ReleaseAttributes;
}

namespace vo::updater::detail {

class IgnoreRules;

/// A file to publish and its path relative to the installation directory.
struct SourceFile
{
    VoFilePath source;
    VoFilePath target;
    std::optional<FileStamp> stamp{}; ///< Taken before the file is read. None of a link, and where it cannot be had.
};

/// Whether a path leads to a regular file on disk, also through links.
VOCORE_PRIVATE_EXPORT bool IsRegularFile(const VoFilePath& path);

/// The regular files below a directory that the rules do not leave out, sorted by the bytes of their targets. Links to
/// directories are not entered, nor are directories that are left out; what is neither a directory nor a regular file
/// is left out with a warning. So is, once, the output of publishing to `declarationsFile` (null: none) when it lies
/// below the directory: that file, what killed publications left of it, and the packages directory beside it.
///
/// With `attributes`, links are not followed but added there, and so are folders in which nothing lies at all.
VOCORE_PRIVATE_EXPORT std::vector<SourceFile>
ListSources(const VoDirectoryPath& directory, const VoFilePath& declarationsFile, const IgnoreRules& ignored,
            const std::function<void(const VoString&)>& warn, ReleaseAttributes* attributes = nullptr);

} // namespace vo::updater::detail
