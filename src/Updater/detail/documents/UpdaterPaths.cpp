#include <Updater/detail/documents/UpdaterPaths.h>

#include <Core/VoChecksum.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/PackageValidator.h>

namespace vo::updater::detail {

VoString ChunkFileName(const VoUUID& chunkID)
{
    return chunkID.toString() + Layout::ChunkSuffix;
}

VoFilePath ChunkPath(const VoUUID& chunkID)
{
    return VoDirectoryPath().directory(Layout::ChunksDirectory).file(ChunkFileName(chunkID));
}

VoDirectoryPath ReleaseDirectory(const VoUUID& packageID, const VoVersion& version)
{
    return VoDirectoryPath()
        .directory(Layout::PackagesDirectory)
        .directory(packageID.toString())
        .directory(version.toString());
}

namespace {

VoFilePath RecordPath(const VoUUID& packageID, const char* suffix)
{
    RequireSafeIdentifier(packageID);
    return VoUpdater::InstalledListingDirectory().file(packageID.toString() + suffix);
}

} // namespace

VoFilePath ListingPath(const VoUUID& packageID)
{
    return RecordPath(packageID, ".xml");
}

VoFilePath RemovedListingPath(const VoUUID& packageID)
{
    return RecordPath(packageID, RemovedSuffix);
}

VoFilePath DamageRecordPath(const VoUUID& packageID)
{
    return RecordPath(packageID, ".damaged");
}

VoDirectoryPath StagingPath(const VoUUID& packageID)
{
    return VoUpdater::DownloadDirectory().directory(packageID.toString());
}

VoFilePath StagedFilePath(const VoDirectoryPath& folder, const VoChecksum& checksum)
{
    return folder.file(checksum.toString() + ".file");
}

} // namespace vo::updater::detail
