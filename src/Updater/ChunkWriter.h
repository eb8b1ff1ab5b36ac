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
class VOCORE_PRIVATE_EXPORT ChunkWriter
{
public:
    /// Called before a chunk is written, with its ID and file.
    using WritingChunk = std::function<void(const VoUUID&, const VoFilePath&)>;
    /// Called with the listing of each chunk written.
    using ChunkWritten = std::function<void(const ChunkListing&)>;
    /// A place in the sequence of bytes.
    struct Mark
    {
        VoUUID chunkID;
        std::size_t size;
    };

    /// Throws as AbstractPackageBuilder's constructor for a bad chunk size.
    ChunkWriter(const VoDirectoryPath& directory, std::uint64_t chunkSize, int compressionLevel, WritingChunk writing,
                ChunkWritten written);
    ~ChunkWriter();

    /// Appends all bytes of a stream. Throws what reading and writing throw; some bytes may have been appended then.
    PackedFile append(VoFileInputByteStream& source);
    /// Writes the chunk being filled, if it has any bytes, and forces it to disk. On failure the bytes stay in the
    /// buffer, so that the call can be repeated.
    void writeChunk();

    /// Where the next byte goes.
    Mark mark() const;
    /// Takes the bytes behind the mark out again, as far as they are still in the buffer.
    void rollBack(const Mark& mark);

    /// The file of a chunk.
    VoFilePath path(const VoUUID& chunkID) const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater::detail
