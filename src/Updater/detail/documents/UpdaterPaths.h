#pragma once

// Where a published release stands, beside its declarations file D:
//
//     <directory of D>\packages\<packageID>\<version>\package.xml
//                                                    \attributes.xml
//                                                    \chunks\<chunkID>.vochk

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>

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

/// How the listing of a package ends that is gone, until the registry has forgotten the package.
inline constexpr const char* RemovedSuffix = ".removed";

/// @{ What stands behind a path while the file that is to bear it is built beside it, and behind that of the old file
/// that is kept there.
inline constexpr const char* BuiltSuffix = ".vonew";
inline constexpr const char* AsideSuffix = ".voold";
/// @}

/// @{ Where the records of a package stand that is, or was, installed.
/// @throws VoValidationException ("Invalid identifier: " + packageID) for an ID that cannot be a file's name
VoFilePath ListingPath(const VoUUID& packageID);
VoFilePath RemovedListingPath(const VoUUID& packageID); ///< What is left of it until the registry has forgotten it.
VoFilePath DamageRecordPath(const VoUUID& packageID);
/// What the listing at a path says nothing of: <packageID>.attributes, beside it, and <packageID>.next.attributes until
/// the listing is that of the same release.
/// @{
VoFilePath AttributesRecordPath(const VoFilePath& listing);
VoFilePath NextAttributesRecordPath(const VoFilePath& listing);
/// @}
/// @}
VoDirectoryPath StagingPath(const VoUUID& packageID); ///< Where its chunks are gathered.
/// The file of a folder of staged files that has some content.
VoFilePath StagedFilePath(const VoDirectoryPath& folder, const VoChecksum& checksum);

} // namespace vo::updater::detail
