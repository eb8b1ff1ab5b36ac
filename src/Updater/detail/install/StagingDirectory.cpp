#include <Updater/detail/install/StagingDirectory.h>

#include <Core/VoByteArray.h>
#include <Core/VoFileException.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/ChunkListing.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/ChunkFile.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileCheck.h>

namespace vo::updater::detail {

StagingDirectory::StagingDirectory(const VoDirectoryPath& directory)
    : m_directory(directory)
{
}

StagingDirectory StagingDirectory::OfPackage(const VoUUID& packageID)
{
    return StagingDirectory(StagingPath(packageID));
}

const VoDirectoryPath& StagingDirectory::path() const
{
    return m_directory;
}

VoFilePath StagingDirectory::chunkPath(const VoUUID& chunkID) const
{
    return m_directory.file(ChunkFileName(chunkID));
}

void StagingDirectory::create() const
{
    AtStep(FileStep::MakeDirectory, m_directory.path());
    VoFileSystem::CreateDirectory(m_directory, true);
}

bool StagingDirectory::holds(const ChunkListing& chunk) const
{
    return IsSound(Expected(chunkPath(chunk.id()), chunk));
}

void StagingDirectory::copy(const VoFilePath& source, const VoUUID& chunkID) const
{
    if (!VoFileSystem::Exists(source))
        throw VoFileNotFoundException(source);
    const VoFilePath target = chunkPath(chunkID);
    AtStep(FileStep::CopyChunk, target.path());
    VoFileSystem::CopyFile(source, target, VoFileSystem::OverwriteExisting);
}

VoByteArray StagingDirectory::read(const VoUUID& chunkID, std::uint64_t limit) const
{
    announceReading(chunkID);
    return load(chunkID, limit);
}

void StagingDirectory::announceReading(const VoUUID& chunkID) const
{
    AtStep(FileStep::ReadChunk, chunkPath(chunkID).path());
}

VoByteArray StagingDirectory::load(const VoUUID& chunkID, std::uint64_t limit) const
{
    return ReadChunk(chunkPath(chunkID), limit);
}

void StagingDirectory::remove() const
{
    if (!VoFileSystem::Exists(m_directory))
        return;
    AtStep(FileStep::EraseDirectory, m_directory.path());
    VoFileSystem::RemoveAll(m_directory);
}

} // namespace vo::updater::detail
