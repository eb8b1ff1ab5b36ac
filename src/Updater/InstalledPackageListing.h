#pragma once

#include <FileSystem/VoDirectoryPath.h>
#include <Updater/AbstractPackageListing.h>
#include <Updater/InstalledFileListing.h>

namespace vo::updater::detail {
struct PlainListing;
class UpdateTransaction;
} // namespace vo::updater::detail

namespace vo::updater {

class AdvertisedFileListing;

/// The record of one installed release: where it was installed, its files, and the directories that installing it
/// created, outermost first, so that uninstalling can remove them.
///
///     <package directory packageID versionID name version>
///         <files>
///             <file path id checksum size/> ...
///         </files>
///         <directories>
///             <path>a directory</path> ...
///         </directories>
///     </package>
class VOCORE_EXPORT InstalledPackageListing : public AbstractPackageListing
{
public:
    InstalledPackageListing();
    /// The identity of `package` installed into a directory; without files.
    InstalledPackageListing(const AbstractPackageListing& package, const VoDirectoryPath& installationDirectory);
    /// Reads a `package` element with its files and directories.
    explicit InstalledPackageListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    InstalledPackageListing(const InstalledPackageListing& other);
    InstalledPackageListing(InstalledPackageListing&& other) noexcept;
    InstalledPackageListing& operator=(const InstalledPackageListing& other);
    InstalledPackageListing& operator=(InstalledPackageListing&& other) noexcept;
    ~InstalledPackageListing() override;
    /// @}

    /// Loads a listing. Every failure is logged with the path first (category "updater").
    /// @throws VoFileNotFoundException for a missing file
    /// @throws VoInvalidXMLException for a malformed one
    /// @throws VoNullPointerException with "Installed package listing failed to load" when the document is something
    /// else
    static VoUniquePtr<InstalledPackageListing> Open(const VoFilePath& path);

    void add(const InstalledFileListing& file); ///< Appends a file.
    /// Appends an installed file.
    void add(const VoFilePath& path, const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size);
    void add(const VoDirectoryPath& directory); ///< Appends a directory that installation created.

    const VoDirectoryPath& installationDirectory() const; ///< Where the release was installed.
    const VoDeque<InstalledFileListing>& files() const;   ///< In the order of installation.
    const VoDeque<VoDirectoryPath>& directories() const;  ///< Created by installation, outermost first.

    const InstalledFileListing* file(const VoUUID& fileID) const override;
    VoDeque<VoUUID> fileIDs() const override;

    using AbstractPackageListing::write;
    /// Writes the listing to a file, replacing it atomically: on failure the old file stays as it was.
    void write(const VoFilePath& path) const;

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;

protected:
    std::vector<const AbstractFileListing*> listedFiles() const override;

private:
    struct Private;
    friend class detail::UpdateTransaction;
    static VoUniquePtr<InstalledPackageListing> Made(detail::PlainListing&& plain);
    void addInstalled(const AdvertisedFileListing& file, const VoFilePath& place);
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
