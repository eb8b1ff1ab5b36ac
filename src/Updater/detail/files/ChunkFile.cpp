#include <Updater/detail/files/ChunkFile.h>

#include <Core/VoByteArray.h>
#include <Core/VoException.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>

#include <cstddef>

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

VoByteArray ReadChunk(const VoFilePath& path, std::uint64_t limit)
{
    const VoByteArray compressed = ReadAll(path);
    const std::uint64_t promised = PromisedSize(compressed);
    if (promised > limit || promised > LargestChunk)
        throw VoInvalidConversionException("Chunk promises too many bytes: " + path.path());
    return compressed.decompress();
}

} // namespace vo::updater::detail
