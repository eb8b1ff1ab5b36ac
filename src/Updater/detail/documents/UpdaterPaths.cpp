#include <Updater/detail/documents/UpdaterPaths.h>

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>

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

VoFilePath BesideDocument(const VoFilePath& document, const VoFilePath& relative)
{
    return document.parent().appended(relative);
}

VoUrl BesideDocument(const VoUrl& document, const VoFilePath& relative)
{
    return document.parent().appended(relative);
}

} // namespace vo::updater::detail
