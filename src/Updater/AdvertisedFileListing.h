#pragma once

#include <Core/VoDeque.h>
#include <Updater/AbstractFileListing.h>
#include <Updater/ChunkReferenceListing.h>

namespace vo::updater::detail {
template <typename Listing>
class ListedFiles;
}

namespace vo::updater {

/// One file of a published release: where it is to be installed and which pieces of which chunks make up its content.
///
/// The content is the concatenation of the chunk references in index order. A file without references is empty.
class VOCORE_EXPORT AdvertisedFileListing : public AbstractFileListing
{
public:
    AdvertisedFileListing();
    /// The references may come in any order; they are sorted by index.
    /// @throws VoInvalidParameterException with "Invalid chunk indexes" unless their indexes are exactly 0 to n-1
    AdvertisedFileListing(const VoFilePath& target, const VoDeque<ChunkReferenceListing>& chunks, const VoUUID& id,
                          const VoChecksum& checksum, const VoDownloadSize& size);
    /// Reads a `file` element of a package definition with its `chunkref` children, sorted and checked as above.
    explicit AdvertisedFileListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    AdvertisedFileListing(const AdvertisedFileListing& other);
    AdvertisedFileListing(AdvertisedFileListing&& other) noexcept;
    AdvertisedFileListing& operator=(const AdvertisedFileListing& other);
    AdvertisedFileListing& operator=(AdvertisedFileListing&& other) noexcept;
    ~AdvertisedFileListing() override;
    /// @}

    /// Adds the rule for the `chunkref` children, which loading a `file` element needs.
    static void AddDefinitions(VoXMLStreamLoader& loader);

    /// The path of the installed file, relative to the installation directory. As it stands in the document: it is
    /// checked by whoever installs, not here.
    VoFilePath target() const;
    /// The pieces of the content, in ascending order of their indexes.
    VoDeque<ChunkReferenceListing> chunks() const;

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;

private:
    template <typename Listing>
    friend class detail::ListedFiles;

    AdvertisedFileListing(const detail::FileTable& table, std::uint32_t number) noexcept; // a view

    void addPieces(VoDeque<ChunkReferenceListing> pieces);
};

} // namespace vo::updater
