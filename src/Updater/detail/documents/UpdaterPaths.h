#pragma once

// Where a published release stands, beside its declarations file D:
//
//     <directory of D>\packages\<packageID>\<version>\package.xml
//                                                    \chunks\<chunkID>.vochk

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

namespace vo::updater::detail {

/// The names of the published layout.
struct Layout
{
    static constexpr const char* PackagesDirectory = "packages";
    static constexpr const char* ChunksDirectory = "chunks";
    static constexpr const char* DefinitionName = "package.xml";
    static constexpr const char* ChunkSuffix = ".vochk";
};

/// The name of a chunk's file, published and staged: chunkID + ".vochk".
VOCORE_PRIVATE_EXPORT VoString ChunkFileName(const VoUUID& chunkID);
/// A chunk's file relative to its definition: "chunks" / ChunkFileName.
VOCORE_PRIVATE_EXPORT VoFilePath ChunkPath(const VoUUID& chunkID);
/// A release's directory relative to the directory of the declarations: "packages" / packageID / version.
VOCORE_PRIVATE_EXPORT VoDirectoryPath ReleaseDirectory(const VoUUID& packageID, const VoVersion& version);

/// @{
/// A safely relative path of a document, at the place of that document. For a URL each piece is percent-encoded and
/// appended to the URL's parent, never resolved: a path such as "//other/x" must not lead to another server. The caller
/// checks the path first (PackageValidator.h).
VOCORE_PRIVATE_EXPORT VoFilePath BesideDocument(const VoFilePath& document, const VoFilePath& relative);
VOCORE_PRIVATE_EXPORT VoUrl BesideDocument(const VoUrl& document, const VoFilePath& relative);
/// @}

} // namespace vo::updater::detail
