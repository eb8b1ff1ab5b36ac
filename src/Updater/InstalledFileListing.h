#pragma once

#include <Updater/AbstractFileListing.h>

namespace vo::updater::detail {
template <typename Listing>
class ListedFiles;
}

namespace vo::updater {

/// One installed file: where it was installed, with the ID, checksum and size it was installed with.
class VOCORE_EXPORT InstalledFileListing : public AbstractFileListing
{
public:
    InstalledFileListing();
    /// Lists the file on disk: its checksum and size are taken from the disk, and its ID is new.
    /// @throws VoFileException as VoChecksum does, for a file that cannot be read
    explicit InstalledFileListing(const VoFilePath& path);
    /// Lists a file without looking at the disk.
    InstalledFileListing(const VoFilePath& path, const VoUUID& id, const VoChecksum& checksum,
                         const VoDownloadSize& size);
    /// Reads a `file` element of an installed package listing.
    explicit InstalledFileListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    InstalledFileListing(const InstalledFileListing& other);
    InstalledFileListing(InstalledFileListing&& other) noexcept;
    InstalledFileListing& operator=(const InstalledFileListing& other);
    InstalledFileListing& operator=(InstalledFileListing&& other) noexcept;
    ~InstalledFileListing() override;
    /// @}

    VoFilePath path() const; ///< Where the file was installed.

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;

private:
    template <typename Listing>
    friend class detail::ListedFiles;

    InstalledFileListing(const detail::FileTable& table, std::uint32_t number) noexcept; // a view
};

} // namespace vo::updater
