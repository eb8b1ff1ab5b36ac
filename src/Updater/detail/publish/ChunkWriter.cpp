#include <Updater/detail/publish/ChunkWriter.h>

#include <Core/VoByteBuffer.h>
#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/detail/Sha3Hasher.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileByteStream.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoThreadException.h>
#include <Threading/detail/Processors.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/UpdaterPaths.h>

#include <algorithm>
#include <deque>
#include <future>
#include <optional>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

constexpr std::uint64_t LargestChunk = 2147483647;

// Checked when a builder is made, not when the first chunk has been filled: that may be hours later.
std::size_t CheckedChunkSize(std::uint64_t size)
{
    if (size == 0)
        throw VoInvalidParameterException("Chunk size must be greater than zero");
    if (size > LargestChunk)
        throw VoOverflowException("Cannot compress byte array as length is beyond maximum allowed size. Array size " +
                                  VoString(size) + " bytes, maximum size " + VoString(LargestChunk) + " bytes.");
    return static_cast<std::size_t>(size);
}

// A pending chunk takes its bytes and at most as many compressed ones. Besides eight chunks, 64 MiB may be taken.
std::size_t MostPending(std::uint64_t chunkSize)
{
    constexpr std::uint64_t besides = std::uint64_t{32} << 20;
    return static_cast<std::size_t>(3 + besides / chunkSize);
}

// A full chunk on its way to the disk.
struct PendingChunk
{
    VoUUID id{""};
    VoByteBuffer bytes{0};
    std::future<ChunkListing> listing;    // invalid when it is not being written
    std::optional<ChunkListing> finished; // taken out of the future

    void finish() { finished = listing.get(); }
};

} // namespace

struct ChunkWriter::Private
{
    Private(const VoDirectoryPath& place, std::uint64_t chunkSize, int level, std::size_t workers)
        : directory(place)
        , compressionLevel(level)
        , buffer(CheckedChunkSize(chunkSize))
        , scheduler(workers > 0 ? workers : vo::detail::AvailableProcessors())
        , limit(std::min(scheduler.workers() + 1, MostPending(chunkSize)))
    {
    }

    void submit(PendingChunk& chunk);
    void collectFirst();
    void finishOthers();
    ChunkListing write(const PendingChunk& chunk) const;
    VoByteBuffer emptyBuffer();

    const VoDirectoryPath directory;
    const int compressionLevel;
    WritingChunk writing;
    ChunkWritten written;
    VoUUID currentID = VoUpdater::GenerateID();
    VoByteBuffer buffer; // never full between two calls
    std::optional<VoByteBuffer> spare;

    std::deque<PendingChunk> pending; // in order; places stay valid while others are added and taken away at the ends
    background_task::VoParallelTaskScheduler scheduler; // ends before what it works on
    const std::size_t limit;                            // of pending chunks
};

// Threads that cannot be had only cost time: the chunk is then written by whoever waits for it.
void ChunkWriter::Private::submit(PendingChunk& chunk)
{
    const auto job = [this, &chunk] { return write(chunk); };
    if (scheduler.workers() > 1) {
        try {
            chunk.listing = scheduler.add(job);
            return;
        } catch (const VoThreadException&) {
        }
    }
    chunk.listing = std::async(std::launch::deferred, job);
}

void ChunkWriter::Private::collectFirst()
{
    PendingChunk& chunk = pending.front();
    if (!chunk.finished) {
        if (!chunk.listing.valid())
            submit(chunk); // it has failed before
        try {
            chunk.finish();
        } catch (...) {
            finishOthers();
            throw;
        }
    }
    written(*chunk.finished);
    spare = std::move(chunk.bytes);
    pending.pop_front();
}

// After a failure: those that failed as well, likely for the same reason, are written again by the next attempt.
void ChunkWriter::Private::finishOthers()
{
    for (PendingChunk& chunk : pending) {
        if (!chunk.listing.valid())
            continue;
        try {
            chunk.finish();
        } catch (...) {
            // the future is used up now
        }
    }
}

ChunkListing ChunkWriter::Private::write(const PendingChunk& chunk) const
{
    const VoByteArray bytes = chunk.bytes.bytes().compress(compressionLevel);
    VoAtomicFileWriter writer(directory.file(ChunkFileName(chunk.id)));
    writer.write(bytes.data(), bytes.size());
    writer.commit();

    vo::detail::Sha3 hasher;
    hasher.add(bytes.data(), bytes.size());
    return ChunkListing(chunk.id, hasher.finish(), VoDownloadSize(static_cast<std::int64_t>(bytes.size())),
                        ChunkPath(chunk.id));
}

// The memory of one that was written is used again: the system hands out fresh memory page by page.
VoByteBuffer ChunkWriter::Private::emptyBuffer()
{
    if (!spare)
        return VoByteBuffer(buffer.capactiy());
    VoByteBuffer result = std::move(*spare);
    spare.reset();
    result.clear();
    return result;
}

ChunkWriter::ChunkWriter(const VoDirectoryPath& directory, std::uint64_t chunkSize, int compressionLevel,
                         WritingChunk writing, ChunkWritten written, std::size_t workers)
    : m_private(new Private(directory, chunkSize, compressionLevel, workers))
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
        if (!buffer.isFull())
            break; // the stream is at its end
        endChunk();
    }
    result.checksum = hasher.finish();
    return result;
}

PackedFile ChunkWriter::append(VoFileInputByteStream& source, const VoDeque<ChunkReferenceListing>& pieces,
                               const std::function<bool(const VoUUID&)>& isKept)
{
    constexpr std::size_t blockSize = 256 * 1024;
    std::vector<char> block(blockSize);
    PackedFile result;
    vo::detail::Sha3 hasher;
    for (const ChunkReferenceListing& piece : pieces) {
        const bool stays = isKept(piece.chunkID());
        if (stays)
            result.pieces.pushBack({piece.chunkID(), piece.offset(), piece.length(), result.pieces.size()});
        for (std::uint64_t left = piece.length(); left > 0;) {
            const std::size_t count = source.read(block.data(), std::min<std::uint64_t>(left, blockSize));
            if (count == 0)
                return result; // shorter than it was: without a checksum
            hasher.add(block.data(), count);
            result.size += count;
            left -= count;
            if (!stays)
                append(block.data(), count, result.pieces);
        }
    }
    result.checksum = hasher.finish();
    return result;
}

void ChunkWriter::append(const char* data, std::size_t size, VoDeque<ChunkReferenceListing>& pieces)
{
    VoByteBuffer& buffer = m_private->buffer;
    while (size > 0) {
        const std::size_t offset = buffer.size();
        const std::size_t count = std::min(size, buffer.capactiy() - offset);
        buffer.resize(offset + count);
        std::copy(data, data + count, buffer.data() + offset);
        const ChunkReferenceListing* last = pieces.isEmpty() ? nullptr : &pieces.back();
        if (last && last->chunkID() == m_private->currentID && last->offset() + last->length() == offset)
            pieces.back() = {last->chunkID(), last->offset(), last->length() + count, last->index()};
        else
            pieces.pushBack({m_private->currentID, offset, count, pieces.size()});
        data += count;
        size -= count;
        if (buffer.isFull())
            endChunk();
    }
}

// Strong: on failure the bytes are still in the buffer.
void ChunkWriter::endChunk()
{
    Private& state = *m_private;
    if (state.buffer.isEmpty())
        return;
    state.writing(state.currentID, path(state.currentID));
    while (state.pending.size() >= state.limit)
        state.collectFirst();
    VoByteBuffer next = state.emptyBuffer();
    VoUUID nextID = VoUpdater::GenerateID();
    state.pending.emplace_back();
    PendingChunk& chunk = state.pending.back();
    chunk.bytes = std::exchange(state.buffer, std::move(next));
    chunk.id = std::exchange(state.currentID, std::move(nextID));
    state.submit(chunk);
}

void ChunkWriter::settle()
{
    while (!m_private->pending.empty())
        m_private->collectFirst();
}

void ChunkWriter::writeChunk()
{
    endChunk();
    settle();
}

std::uint64_t ChunkWriter::capacity() const
{
    return m_private->buffer.capactiy();
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
