#pragma once

#include <Updater/XMLObject.h>

#include <cstdint>
#include <memory>

namespace vo::updater {

/// One piece of a file's content: `length` bytes from `offset` of the uncompressed chunk. A chunk may hold pieces of
/// several files, and a file pieces of several chunks.
class VOCORE_EXPORT ChunkReferenceListing : public XMLObject
{
public:
    ChunkReferenceListing();
    /// A piece; see the members of the same names.
    ChunkReferenceListing(const VoUUID& chunkID, std::uint64_t offset, std::uint64_t length, std::uint64_t index);
    /// Reads a `chunkref` element. The three numbers are strict decimals without sign; anything else throws
    /// VoInvalidConversionException ("Invalid conversion from " + text + " to unsigned integer").
    explicit ChunkReferenceListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    ChunkReferenceListing(const ChunkReferenceListing& other);
    ChunkReferenceListing(ChunkReferenceListing&& other) noexcept;
    ChunkReferenceListing& operator=(const ChunkReferenceListing& other);
    ChunkReferenceListing& operator=(ChunkReferenceListing&& other) noexcept;
    ~ChunkReferenceListing() override;
    /// @}

    const VoUUID& chunkID() const; ///< The chunk that holds the piece.
    std::uint64_t offset() const;  ///< Where in the chunk the piece starts, in bytes.
    std::uint64_t length() const;  ///< How many bytes the piece has.
    std::uint64_t index() const;   ///< The position of the piece in its file, from 0.

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
