#pragma once

#include <Updater/XMLObject.h>

#include <memory>

namespace vo::updater {

/// One chunk file of a release: its ID, the checksum and size of the (compressed) chunk file as it is transferred, and
/// the file's path relative to the directory of the package definition.
class VOCORE_EXPORT ChunkListing : public XMLObject
{
public:
    ChunkListing();
    /// Lists a chunk file; see the members of the same names.
    ChunkListing(const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size, const VoFilePath& path);
    /// Reads a `chunk` element of a package definition.
    explicit ChunkListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    ChunkListing(const ChunkListing& other);
    ChunkListing(ChunkListing&& other) noexcept;
    ChunkListing& operator=(const ChunkListing& other);
    ChunkListing& operator=(ChunkListing&& other) noexcept;
    ~ChunkListing() override;
    /// @}

    const VoUUID& id() const;           ///< The chunk's ID.
    const VoChecksum& checksum() const; ///< The digest of the chunk file.
    const VoDownloadSize& size() const; ///< The length of the chunk file in bytes.
    /// The chunk file relative to the definition's directory. As it stands in the document: checked by whoever fetches.
    const VoFilePath& path() const;

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
