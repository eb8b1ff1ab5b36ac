#pragma once

#include <Updater/XMLObject.h>

#include <memory>

namespace vo::updater {

/// What every listing of a file holds: its ID, which stays the same across the releases of a package, the digest of its
/// whole content and its length in bytes.
class VOCORE_EXPORT AbstractFileListing : public XMLObject
{
public:
    ~AbstractFileListing() override;

    const VoUUID& id() const;           ///< The file's ID.
    const VoChecksum& checksum() const; ///< The digest of the whole content.
    const VoDownloadSize& size() const; ///< The length of the content in bytes.

    /// Whether ID, checksum and size are all equal. Where the file lies plays no part.
    bool equivalent(const AbstractFileListing& other) const;

    void writeAttributes(VoXMLElementWriter& element) const override;

protected:
    /// An empty listing: no ID, a null checksum, size 0.
    AbstractFileListing();
    /// Lists a file of the given ID, digest and length.
    AbstractFileListing(const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size);
    /// Reads the attributes `id`, `checksum` and `size`; throws what a missing or malformed attribute throws.
    explicit AbstractFileListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    AbstractFileListing(const AbstractFileListing& other);
    AbstractFileListing(AbstractFileListing&& other) noexcept;
    AbstractFileListing& operator=(const AbstractFileListing& other);
    AbstractFileListing& operator=(AbstractFileListing&& other) noexcept;
    /// @}

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
