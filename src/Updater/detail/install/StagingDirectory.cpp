#include <Updater/detail/install/StagingDirectory.h>

#include <Core/VoByteArray.h>
#include <Core/VoFileException.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <Updater/ChunkListing.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileCheck.h>

namespace vo::updater::detail {

namespace {

// No chunk file may be larger: what is read here is held in memory, compressed and uncompressed.
constexpr std::uint64_t LargestChunk = std::uint64_t{1} << 30;

VoByteArray ReadAll(const VoFilePath& path)
{
    const std::uint64_t expected = VoFileSystem::FileSize(path);
    if (expected > LargestChunk)
        throw VoInvalidConversionException("Chunk file is too large: " + path.path());
    VoFileInputByteStream stream(path);
    stream.requireOpen();
    // One byte more than expected shows that the file has grown; then the buffer doubles.
    VoByteArray bytes(static_cast<std::size_t>(expected) + 1);
    std::size_t count = 0;
    while (const std::size_t got = stream.read(bytes.data() + count, bytes.size() - count)) {
        count += got;
        if (count > LargestChunk)
            throw VoInvalidConversionException("Chunk file is too large: " + path.path());
        if (count == bytes.size())
            bytes.resize(2 * count);
    }
    bytes.resize(count);
    return bytes;
}

// The compressed form begins with the length of the content, most significant byte first.
std::uint64_t PromisedSize(const VoByteArray& compressed)
{
    std::uint64_t size = 0;
    for (std::size_t i = 0; i < 4 && i < compressed.size(); ++i)
        size = size << 8 | static_cast<unsigned char>(compressed[i]);
    return size;
}

} // namespace

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
    const VoFilePath path = chunkPath(chunkID);
    const VoByteArray compressed = ReadAll(path);
    const std::uint64_t promised = PromisedSize(compressed);
    if (promised > limit || promised > LargestChunk)
        throw VoInvalidConversionException("Chunk promises too many bytes: " + path.path());
    return compressed.decompress();
}

void StagingDirectory::remove() const
{
    if (!VoFileSystem::Exists(m_directory))
        return;
    AtStep(FileStep::EraseDirectory, m_directory.path());
    VoFileSystem::RemoveAll(m_directory);
}

} // namespace vo::updater::detail
