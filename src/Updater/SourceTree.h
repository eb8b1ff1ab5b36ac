#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>

#include <functional>
#include <vector>

namespace vo::updater::detail {

/// A file to publish and its path relative to the installation directory.
struct SourceFile
{
    VoFilePath source;
    VoFilePath target;
};

/// Whether a path leads to a regular file on disk, also through links.
VOCORE_PRIVATE_EXPORT bool IsRegularFile(const VoFilePath& path);

/// The regular files below a directory, sorted by the bytes of their targets. Links to directories are not entered;
/// what is neither a directory nor a regular file is left out with a warning. So is, once, the output of publishing to
/// `declarationsFile` (null: none) when it lies below the directory: that file and the packages directory beside it.
VOCORE_PRIVATE_EXPORT std::vector<SourceFile> ListSources(const VoDirectoryPath& directory,
                                                          const VoFilePath& declarationsFile,
                                                          const std::function<void(const VoString&)>& warn);

} // namespace vo::updater::detail
