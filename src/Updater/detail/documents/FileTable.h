#pragma once

// What listings know of their files, in one piece: identifiers and digests as bytes, all texts behind one another. A
// release may have hundreds of thousands of files, and an object for each of their values is ten times as large.

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vo::updater::detail {

/// Files in their order, each found by its ID in constant time. Of several with one ID the first is found.
///
/// Texts come back as they were given, byte for byte: those that are written in the usual form are kept as the bytes
/// that they mean, all others as they are. A checksum comes back equal.
class VOCORE_PRIVATE_EXPORT FileTable
{
public:
    using Number = std::uint32_t; ///< Of a file, from 0.
    static constexpr Number None = std::numeric_limits<Number>::max();

    /// A piece of a file's content. Its index is its position among the file's pieces.
    struct Piece
    {
        std::uint64_t offset;
        std::uint64_t length;
        std::uint32_t chunk; ///< For chunkID().
    };

    /// The pieces of a file.
    struct Pieces
    {
        const Piece* first;
        const Piece* last;

        const Piece* begin() const { return first; }
        const Piece* end() const { return last; }
        std::size_t size() const { return static_cast<std::size_t>(last - first); }
    };

    /// Room for the files of a document of so many bytes; only an estimate.
    void reserveFor(std::size_t documentBytes);

    /// @{ Appends a file. `checksum` is hexadecimal, read as VoChecksum::Deserialize does; `path` is normalised.
    Number add(std::string_view id, std::string_view checksum, std::int64_t size, std::string_view path);
    Number add(const VoUUID& id, const VoChecksum& checksum, std::int64_t size, const VoString& path);
    Number add(const FileTable& other, Number file);
    /// @}
    /// Appends a file of another table at another path, without its pieces.
    Number addAt(std::string_view path, const FileTable& other, Number file);
    /// Appends a piece to the file added last.
    void addPiece(std::string_view chunkID, std::uint64_t offset, std::uint64_t length);

    std::size_t size() const { return m_rows.size(); }
    /// @{ None when there is no such file.
    Number find(const VoUUID& id) const;
    Number find(const FileTable& other, Number otherFile) const; ///< The file with the ID of one of another table.
    /// @}

    VoUUID id(Number file) const;
    VoChecksum checksum(Number file) const;
    std::int64_t length(Number file) const { return m_rows[file].size; } ///< The size in bytes; -1 for an unknown one.
    std::string_view path(Number file) const;                            ///< Valid until a file is added.
    Pieces pieces(Number file) const;

    /// The IDs of chunks that pieces name, each once.
    const std::vector<std::string>& chunkIDs() const { return m_chunkIDs; }

    /// @{ Appends a value's text.
    void appendID(std::string& text, Number file) const;
    void appendChecksum(std::string& text, Number file) const;
    /// @}

    /// Whether the IDs are equal.
    bool sameID(Number file, const FileTable& other, Number otherFile) const;
    /// Whether the first ID is ordered before the other, as VoUUID orders them.
    bool isBefore(Number file, const FileTable& other, Number otherFile) const;
    /// Whether the checksums are equal.
    bool sameChecksum(Number file, const FileTable& other, Number otherFile) const;

    /// All texts that are kept as they are, behind one another.
    std::string_view texts() const { return m_texts; }

private:
    enum class Form : std::uint8_t
    {
        Plain,  // an ID of 36 characters, a digest of 32 bytes
        Braced, // an ID between braces
        Other,  // an ID's text, or a digest of another length: among the texts
        Null,   // a null checksum
    };

    // So many files are found without an index.
    static constexpr std::size_t Few = 8;

    // Where a text begins among the texts, and its length.
    struct Span
    {
        std::uint64_t begin;
        std::uint64_t length;
    };

    using IDBytes = std::array<unsigned char, 16>;
    using DigestBytes = std::array<unsigned char, 32>;

    struct Row
    {
        IDBytes id;         // a Span for one of another form
        DigestBytes digest; // a Span for one of another form
        std::int64_t size;
        std::uint64_t path;
        std::uint32_t pathLength;
        std::uint32_t firstPiece;
        Form idForm;
        Form digestForm;
    };

    static Form Pack(std::string_view text, IDBytes& bytes);
    template <typename Bytes>
    void keepText(std::string_view text, Bytes& room);
    template <typename Bytes>
    std::string_view kept(const Bytes& room) const;
    std::string_view digestBytes(const Row& row) const;
    Number append(std::string_view id, Row row, std::string_view path);
    Number append(const Row& row, std::string_view path);
    Row copied(const FileTable& other, Number file);
    void index(Number file);
    void growIndex();
    // An ID as the index sees it.
    struct Key
    {
        Form form;
        std::string_view bytes; // the 16, or those of a text
    };
    Key keyOf(const Row& row) const;
    bool isKey(const Row& row, const Key& key) const;
    Number find(const Key& key) const;

    std::vector<Row> m_rows;
    std::string m_texts;
    std::vector<Piece> m_pieces;
    std::vector<std::string> m_chunkIDs;
    std::unordered_map<std::string, std::uint32_t> m_chunkNumbers;
    std::vector<Number> m_slots; // by the hash of the ID, a power of two; empty while the files are few
    std::size_t m_fewestSlots = 4 * Few;
};

} // namespace vo::updater::detail
