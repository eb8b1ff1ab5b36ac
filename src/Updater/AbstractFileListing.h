#pragma once

#include <Updater/XMLObject.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace vo::updater::detail {
class FileTable;
struct ListedFile;
} // namespace vo::updater::detail

namespace vo::updater {

/// What every listing of a file holds: its ID, which stays the same across the releases of a package, the digest of its
/// whole content and its length in bytes.
///
/// The files of a package's listing are views of what the listing holds, and valid as long as it is; a copy is a value
/// of its own. Values are made when they are asked for.
class VOCORE_EXPORT AbstractFileListing : public XMLObject
{
public:
    ~AbstractFileListing() override;

    VoUUID id() const;           ///< The file's ID.
    VoChecksum checksum() const; ///< The digest of the whole content.
    VoDownloadSize size() const; ///< The length of the content in bytes.

    /// Whether ID, checksum and size are all equal. Where the file lies plays no part.
    bool equivalent(const AbstractFileListing& other) const;

    void writeAttributes(VoXMLElementWriter& element) const override;

protected:
    /// An empty listing: no ID, a null checksum, size 0.
    AbstractFileListing();
    /// Lists a file of the given ID, digest and length; `path` is the one that the derived class adds.
    AbstractFileListing(const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size,
                        const VoFilePath& path);
    /// Reads the attributes `id`, `checksum` and `size`, and the path in the attribute of the given name; throws what a
    /// missing or malformed attribute throws.
    AbstractFileListing(VoXMLStreamElementLoader& element, const char* pathAttribute);
    /// A view of a file in a table, which must outlive it.
    AbstractFileListing(const detail::FileTable& table, std::uint32_t number) noexcept;

    /// @{ Copies are deep; a moved-from listing reads as empty.
    AbstractFileListing(const AbstractFileListing& other);
    AbstractFileListing(AbstractFileListing&& other) noexcept;
    AbstractFileListing& operator=(const AbstractFileListing& other);
    AbstractFileListing& operator=(AbstractFileListing&& other) noexcept;
    /// @}

    /// The path, valid as long as what holds it.
    std::string_view pathText() const;
    /// Appends a piece to a file that is no view.
    void addPiece(const VoUUID& chunkID, std::uint64_t offset, std::uint64_t length);

private:
    friend struct detail::ListedFile;

    detail::FileTable& own();

    std::unique_ptr<detail::FileTable> m_own;   // with this file alone; null for a view
    const detail::FileTable* m_table = nullptr; // m_own, or the one that is viewed; null: empty
    std::uint32_t m_number = 0;                 // in the table
};

} // namespace vo::updater
