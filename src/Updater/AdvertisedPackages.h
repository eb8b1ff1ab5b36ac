#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoLocation.h>
#include <Updater/AbstractPackage.h>

struct VoDownloadPolicy;

namespace vo::updater {

class AdvertisedPackageListing;

/// The declarations document: the list of all published releases, of any number of packages, oldest addition first.
///
///     <packages>
///         <package path packageID versionID name version/> ...
///     </packages>
class VOCORE_EXPORT AdvertisedPackages : public XMLObject
{
public:
    /// One published release: its identity and where its definition stands.
    class VOCORE_EXPORT Declaration : public AbstractPackage
    {
    public:
        Declaration();
        /// Declares `package`, whose definition stands at `path` relative to the directory of the declarations file.
        Declaration(const AbstractPackage& package, const VoFilePath& path);
        /// Reads a `package` element of a declarations document.
        explicit Declaration(VoXMLStreamElementLoader& element);

        /// @{ Copies are deep; a moved-from declaration reads as empty.
        Declaration(const Declaration& other);
        Declaration(Declaration&& other) noexcept;
        Declaration& operator=(const Declaration& other);
        Declaration& operator=(Declaration&& other) noexcept;
        ~Declaration() override;
        /// @}

        /// The definition file relative to the directory of the declarations file, as it stands in the document.
        const VoFilePath& path() const;
        /// Where the definition stands, given where the declarations were read from.
        /// @throws VoValidationException with "Invalid definition path: " + path() when that path is not safely
        /// relative: a document must not lead to another server or out of its directory
        VoLocation definition(const VoLocation& declarations) const;

        Type objectType() const override;
        void writeAttributes(VoXMLElementWriter& element) const override;

    private:
        struct Private;
        std::unique_ptr<Private> m_private; // empty in a moved-from object
    };

    /// No releases.
    AdvertisedPackages();
    /// Reads a `packages` element.
    explicit AdvertisedPackages(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from object reads as empty.
    AdvertisedPackages(const AdvertisedPackages& other);
    AdvertisedPackages(AdvertisedPackages&& other) noexcept;
    AdvertisedPackages& operator=(const AdvertisedPackages& other);
    AdvertisedPackages& operator=(AdvertisedPackages&& other) noexcept;
    ~AdvertisedPackages() override;
    /// @}

    /// Loads a declarations file; empty when the document's root is not that of a declarations document. Every failure
    /// is logged with the path first (category "updater").
    /// @throws VoFileNotFoundException for a missing file
    /// @throws VoInvalidXMLException for a malformed one ("Document type declarations are not allowed" for one with a
    /// DTD), and what missing or malformed attributes throw
    static VoUniquePtr<AdvertisedPackages> Open(const VoFilePath& path);
    /// @{
    /// Fetches the declarations into a temporary file and opens that. A transfer is tried once.
    /// @throws VoDownloadException for what cannot be fetched, with its text (that of a raised flag is "Download
    /// cancelled"), and for a document of more than 64 MiB
    static VoUniquePtr<AdvertisedPackages> Open(const VoUrl& url);
    static VoUniquePtr<AdvertisedPackages> Open(const VoUrl& url, VoStopFlag stop);
    /// @}
    /// Opens the declarations where they stand, as above; `stop` and `downloads` concern a URL.
    static VoUniquePtr<AdvertisedPackages> Open(const VoLocation& location, VoStopFlag stop,
                                                const VoDownloadPolicy& downloads);

    /// Loads declarations from memory, as Open does from a file; `name` is what errors and the log call them.
    static VoUniquePtr<AdvertisedPackages> Parse(const VoString& bytes, const VoString& name);

    /// Declares a release, as the last one. An earlier declaration with the same package and version ID is replaced.
    void add(const AdvertisedPackageListing& package, const VoFilePath& path);
    /// Drops all declarations of a package that name this definition path (compared as paths, ignoring case). A release
    /// that is built again takes the place of the older build on disk, so the older build's declaration must go.
    void remove(const VoUUID& packageID, const VoFilePath& path);

    const VoDeque<Declaration>& declarations() const; ///< In the order of addition.
    /// The release of a package with the highest version, the build type left aside; of equal ones the first declared.
    /// The reference is valid until this object changes.
    /// @throws VoNotFoundException naming the package ID
    const Declaration& newestPackage(const VoUUID& packageID) const;
    /// The first declaration with both IDs.
    /// @throws VoNotFoundException naming the version ID
    const Declaration& package(const VoUUID& packageID, const VoUUID& versionID) const;

    using XMLObject::write;
    /// Writes the declarations to a file, replacing it atomically: on failure the old file stays as it was.
    void write(const VoFilePath& path) const;

    Type objectType() const override;
    void writeElements(VoXMLElementWriter& element) const override;

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
