#pragma once

// Packs bytes into chunks: a buffer of fixed capacity that is compressed into a file of its own when it is full.

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Updater/ChunkListing.h>
#include <Updater/ChunkReferenceListing.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace vo::updater::detail {

/// What became of a file's bytes.
struct PackedFile
{
    VoDeque<ChunkReferenceListing> pieces; ///< In index order; none for an empty file.
    VoChecksum checksum;                   ///< Of all bytes, taken while they passed.
    std::uint64_t size = 0;                ///< Their number.
};

/// Fills chunks and writes them to a directory, each as "<chunkID>.vochk": the bytes compressed (their number,
/// big-endian in four bytes, and a zlib stream). Knows nothing of packages.
///
/// Full chunks are compressed and written on all processors while the next ones are filled; a bounded number of them
/// waits. Their bytes are those that one thread would write, and they are told of in their order, on the calling
/// thread.
class VOCORE_PRIVATE_EXPORT ChunkWriter
{
public:
    /// Called before a chunk is handed on to be written, with its ID and file.
    using WritingChunk = std::function<void(const VoUUID&, const VoFilePath&)>;
    /// Called with the listing of each chunk written, in the order of the chunks, from within the calls below.
    using ChunkWritten = std::function<void(const ChunkListing&)>;
    /// A place in the sequence of bytes.
    struct Mark
    {
        VoUUID chunkID;
        std::size_t size;
    };

    /// Throws as AbstractPackageBuilder's constructor for a bad chunk size. `workers` is the number of threads that
    /// compress; 0: one for each processor.
    ChunkWriter(const VoDirectoryPath& directory, std::uint64_t chunkSize, int compressionLevel, WritingChunk writing,
                ChunkWritten written, std::size_t workers = 0);
    ~ChunkWriter();

    /// Appends all bytes of a stream. Throws what reading and writing throw, also what went wrong with a chunk handed
    /// on before; some bytes may have been appended then.
    PackedFile append(VoFileInputByteStream& source);
    /// As above for a file that is in chunks already, as `pieces` tells in the order of its bytes: those in chunks that
    /// are kept are read for the checksum only.
    PackedFile append(VoFileInputByteStream& source, const VoDeque<ChunkReferenceListing>& pieces,
                      const std::function<bool(const VoUUID&)>& isKept);
    /// Lets the chunk being filled end here, unless it has no bytes.
    void endChunk();
    /// Waits until all chunks handed on are on disk and told of. A chunk that could not be written stays with its bytes
    /// and is written again by the next call that needs it.
    void settle();
    /// Writes the chunk being filled, if it has any bytes, and settles. On failure no byte is lost, so that the call
    /// can be repeated.
    void writeChunk();

    std::uint64_t capacity() const; ///< Bytes that a chunk holds at most.
    /// Where the next byte goes.
    Mark mark() const;
    /// Takes the bytes behind the mark out again, as far as they are still in the buffer.
    void rollBack(const Mark& mark);

    /// The file of a chunk.
    VoFilePath path(const VoUUID& chunkID) const;

private:
    struct Private;

    void append(const char* data, std::size_t size, VoDeque<ChunkReferenceListing>& pieces);

    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater::detail
