#include <Updater/ChunkWriter.h>

#include <Core/Sha3Hasher.h>
#include <Core/VoByteBuffer.h>
#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileByteStream.h>
#include <Updater/UpdaterPaths.h>
#include <Updater/VoUpdater.h>

#include <utility>

namespace vo::updater::detail {

namespace {

constexpr std::uint64_t largestChunk = 2147483647;

// Checked when a builder is made, not when the first chunk has been filled: that may be hours later.
std::size_t CheckedChunkSize(std::uint64_t size)
{
    if (size == 0)
        throw VoInvalidParameterException("Chunk size must be greater than zero");
    if (size > largestChunk)
        throw VoOverflowException("Cannot compress byte array as length is beyond maximum allowed size. Array size " +
                                  VoString(size) + " bytes, maximum size " + VoString(largestChunk) + " bytes.");
    return static_cast<std::size_t>(size);
}

} // namespace

struct ChunkWriter::Private
{
    Private(const VoDirectoryPath& place, std::uint64_t chunkSize, int level)
        : directory(place)
        , compressionLevel(level)
        , buffer(CheckedChunkSize(chunkSize))
    {
    }

    const VoDirectoryPath directory;
    const int compressionLevel;
    WritingChunk writing;
    ChunkWritten written;
    VoUUID currentID = VoUpdater::GenerateID();
    VoByteBuffer buffer; // never full between two calls
};

ChunkWriter::ChunkWriter(const VoDirectoryPath& directory, std::uint64_t chunkSize, int compressionLevel,
                         WritingChunk writing, ChunkWritten written)
    : m_private(new Private(directory, chunkSize, compressionLevel))
{
    m_private->writing = std::move(writing);
    m_private->written = std::move(written);
}

ChunkWriter::~ChunkWriter() = default;

PackedFile ChunkWriter::append(VoFileInputByteStream& source)
{
    VoByteBuffer& buffer = m_private->buffer;
    PackedFile result;
    vo::detail::Sha3 hasher;
    for (;;) {
        const std::size_t offset = buffer.size();
        const std::size_t count = buffer.grab(source);
        if (count == 0)
            break;
        hasher.add(buffer.data() + offset, count);
        result.pieces.pushBack(ChunkReferenceListing(m_private->currentID, offset, count, result.pieces.size()));
        result.size += count;
        if (buffer.isFull())
            writeChunk();
    }
    result.checksum = hasher.finish();
    return result;
}

void ChunkWriter::writeChunk()
{
    VoByteBuffer& buffer = m_private->buffer;
    if (buffer.isEmpty())
        return;

    const VoUUID id = m_private->currentID;
    const VoFilePath file = path(id);
    m_private->writing(id, file);

    const VoByteArray bytes = buffer.bytes().compress(m_private->compressionLevel);
    VoAtomicFileWriter writer(file);
    writer.write(bytes.data(), bytes.size());
    writer.commit();

    vo::detail::Sha3 hasher;
    hasher.add(bytes.data(), bytes.size());
    m_private->written(
        ChunkListing(id, hasher.finish(), VoDownloadSize(static_cast<std::int64_t>(bytes.size())), ChunkPath(id)));
    m_private->currentID = VoUpdater::GenerateID();
    buffer.clear();
}

ChunkWriter::Mark ChunkWriter::mark() const
{
    return {m_private->currentID, m_private->buffer.size()};
}

void ChunkWriter::rollBack(const Mark& mark)
{
    // Behind a chunk that was written meanwhile the buffer holds nothing from before the mark.
    m_private->buffer.resize(m_private->currentID == mark.chunkID ? mark.size : 0);
}

VoFilePath ChunkWriter::path(const VoUUID& chunkID) const
{
    return m_private->directory.file(ChunkFileName(chunkID));
}

} // namespace vo::updater::detail
