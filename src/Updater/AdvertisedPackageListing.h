#pragma once

#include <FileSystem/VoLocation.h>
#include <Updater/AbstractPackageListing.h>
#include <Updater/AdvertisedFileListing.h>
#include <Updater/ChunkListing.h>

#include <memory>

struct VoDownloadPolicy;

namespace vo::updater::detail {
struct PlainListing;
}

namespace vo::updater {

class ReleasePatches;

/// The definition of one release as it is published: its identity, its files and the chunks that hold their bytes.
///
/// The document, by convention named "package.xml":
///
///     <package packageID versionID name version>
///         <files>
///             <file target id checksum size>
///                 <chunkref chunkID offset length index/> ...
///             </file> ...
///         </files>
///         <chunks>
///             <chunk id checksum size path/> ...
///         </chunks>
///     </package>
///
/// Unknown elements and attributes are skipped. Opening checks the form of a document only, so that a tool can look at
/// a bad one; whether it is safe to install is decided before anything is fetched.
class VOCORE_EXPORT AdvertisedPackageListing : public AbstractPackageListing
{
public:
    AdvertisedPackageListing();
    /// A release without files.
    AdvertisedPackageListing(const VoUUID& packageID, const VoUUID& versionID, const VoString& name,
                             const VoVersion& version);
    /// Reads a `package` element with its files and chunks.
    explicit AdvertisedPackageListing(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from listing reads as empty.
    AdvertisedPackageListing(const AdvertisedPackageListing& other);
    AdvertisedPackageListing(AdvertisedPackageListing&& other) noexcept;
    AdvertisedPackageListing& operator=(const AdvertisedPackageListing& other);
    AdvertisedPackageListing& operator=(AdvertisedPackageListing&& other) noexcept;
    ~AdvertisedPackageListing() override;
    /// @}

    /// Loads a definition file. Every failure is logged with the path first (category "updater").
    /// @throws VoFileNotFoundException for a missing file
    /// @throws VoInvalidXMLException for a malformed one ("Document type declarations are not allowed" for one with a
    /// DTD)
    /// @throws VoNullPointerException with "Package advert failed to load" when the document is something else, and
    /// what missing or malformed attributes throw
    static VoUniquePtr<AdvertisedPackageListing> Open(const VoFilePath& path);
    /// The same from memory; `name` is what errors and the log call the document.
    static VoUniquePtr<AdvertisedPackageListing> Parse(const VoString& bytes, const VoString& name);
    /// @{
    /// Fetches the definition into a temporary file and opens that. A transfer is tried once.
    /// @throws VoDownloadException for what cannot be fetched, with its text (that of a raised flag is "Download
    /// cancelled"), and for a document of more than 64 MiB
    static VoUniquePtr<AdvertisedPackageListing> Open(const VoUrl& url);
    static VoUniquePtr<AdvertisedPackageListing> Open(const VoUrl& url, VoStopFlag stop);
    /// @}
    /// Opens the definition where it stands, as above; `stop` and `downloads` concern a URL.
    static VoUniquePtr<AdvertisedPackageListing> Open(const VoLocation& location, VoStopFlag stop,
                                                      const VoDownloadPolicy& downloads);

    /// Sets the attributes() to what stands beside the definition, or to empty ones where nothing does; does nothing
    /// when they are known. Nobody verifies them: TrustedReleases does that for what is to be installed.
    /// @throws VoValidationException "Invalid attributes: not those of the release: " + name; and what reading and
    /// ReleaseAttributes::Parse() throw
    void findAttributes(const VoLocation& definition, const VoStopFlag& stop, const VoDownloadPolicy& downloads);

    void add(const AdvertisedFileListing& file); ///< Appends a file.
    void add(const ChunkListing& chunk);         ///< Appends a chunk.

    const VoDeque<AdvertisedFileListing>& files() const; ///< In the order of the document.
    const VoDeque<ChunkListing>& chunks() const;         ///< In the order of the document.

    const AdvertisedFileListing* file(const VoUUID& fileID) const override;
    VoDeque<VoUUID> fileIDs() const override;
    /// The chunk with that ID, or null; the first one when a document lists it twice.
    const ChunkListing* chunk(const VoUUID& chunkID) const;

    /// The patches that lead to the release. They stand in a document of their own, and this listing's does not have
    /// them. Null when there are none, or nobody has looked.
    const std::shared_ptr<const ReleasePatches>& patches() const noexcept;
    /// Sets the patches; an installation takes them from here.
    void setPatches(std::shared_ptr<const ReleasePatches> patches) noexcept;

    using AbstractPackageListing::write;
    /// Writes the definition to a file, replacing it atomically: on failure the old file stays as it was.
    void write(const VoFilePath& path) const;

    Type objectType() const override;
    void writeElements(VoXMLElementWriter& element) const override;

protected:
    std::vector<const AbstractFileListing*> listedFiles() const override;

private:
    struct Private;
    static VoUniquePtr<AdvertisedPackageListing> Made(detail::PlainListing&& plain);
    std::unique_ptr<Private> m_private; // empty in a moved-from object
    std::shared_ptr<const ReleasePatches> m_patches;
};

} // namespace vo::updater
