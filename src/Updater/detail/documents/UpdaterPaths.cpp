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

VoFilePath BesideListing(const VoFilePath& listing, const char* suffix)
{
    constexpr std::size_t listingSuffix = 4; // ".xml"
    const VoString& path = listing.path();
    return VoFilePath::CreateUnchecked(path.substring(0, path.size() - listingSuffix).toString() + suffix);
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

VoFilePath AttributesRecordPath(const VoFilePath& listing)
{
    return BesideListing(listing, ".attributes");
}

VoFilePath NextAttributesRecordPath(const VoFilePath& listing)
{
    return BesideListing(listing, ".next.attributes");
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
