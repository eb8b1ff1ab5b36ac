#pragma once

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoUniquePtr.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoFilePath.h>
#include <Time/VoTimePoint.h>
#include <Updater/XMLObject.h>

#include <cstdint>

namespace vo::updater {

/// What a publisher says of all that stands in a folder of releases: the digests of the declarations and definitions,
/// since when and until when that holds, and to whom each release is offered. Signatures are made of its bytes.
///
///     <manifest serial made expires>
///         <declarations path size checksum/> ...
///         <package id lowest/> ...
///         <release packageID versionID version path size checksum channel share start from withdrawn notes/> ...
///         <document path size checksum/> ...
///     </manifest>
///
/// It stands beside the declarations, named FileName. Sizes are in bytes, instants in universal time. The attributes of
/// a release from "share" on are optional. A plain value.
class VOCORE_EXPORT ReleaseManifest : public XMLObject
{
public:
    static constexpr const char* FileName = "manifest.xml"; ///< Beside the declarations.
    static constexpr std::uint64_t WholeShare = 10000;      ///< The share of a release that is offered to all.
    static constexpr std::uint64_t LargestSerial = 1'000'000'000'000'000; ///< No manifest has a higher serial number.
    static constexpr std::uint64_t LargestSize = 16u << 20;               ///< Bytes that a manifest may have.

    /// A document of the folder.
    struct VOCORE_EXPORT Document
    {
        VoFilePath path;        ///< Relative to the folder.
        std::uint64_t size = 0; ///< Its bytes.
        VoChecksum checksum;    ///< Their digest.
    };

    /// A release: its definition, and who may install it.
    struct VOCORE_EXPORT Release : Document
    {
        VoUUID packageID{""}; ///< The package.
        VoUUID versionID{""}; ///< The release.
        VoVersion version;    ///< Its number.
        VoString channel;     ///< VoUpdater::ReleaseChannel or VoUpdater::BetaChannel; others are offered to nobody.
        /// How many of 10,000 installations it is offered to, from 0 to WholeShare.
        std::uint64_t share = WholeShare;
        VoTimePoint start;                           ///< When the roll-out begins; the beginning of 1970: at once.
        VoVersion from;                              ///< The lowest installed release that it updates; 0.0.0: any.
        bool isWithdrawn = false;                    ///< Whether nobody shall install it any more.
        VoString notes;                              ///< The URL of its notes, http or https; may be empty.
        bool isOfferedTo(std::uint64_t place) const; ///< Whether the share reaches the `place`, from 0 to 9,999.
    };

    /// What holds for all releases of a package.
    struct VOCORE_EXPORT Package
    {
        VoUUID id{""};    ///< The package.
        VoVersion lowest; ///< No older release may be installed any more.
    };

    ReleaseManifest(); ///< Of nothing, serial 0.
    /// Reads a `manifest` element.
    /// @throws VoValidationException as Parse()
    explicit ReleaseManifest(VoXMLStreamElementLoader& element);
    /// @{ Values: copies are deep, a moved-from manifest is only good for being assigned to.
    ReleaseManifest(const ReleaseManifest& other);
    ReleaseManifest(ReleaseManifest&& other) noexcept;
    ReleaseManifest& operator=(const ReleaseManifest& other);
    ReleaseManifest& operator=(ReleaseManifest&& other) noexcept;
    ~ReleaseManifest() override;
    /// @}

    /// Reads a document from memory; `name` is what errors and the log call it.
    /// @throws VoNullPointerException "Manifest failed to load", for a document of another kind
    /// @throws VoValidationException "Invalid manifest: " + what is wrong, for one that cannot be; and what malformed
    /// documents throw
    static ReleaseManifest Parse(const VoString& bytes, const VoString& name);
    /// The whole document.
    /// @throws VoValidationException as Parse()
    VoString toDocument() const;

    std::uint64_t serial = 0;       ///< Grows with every change.
    VoTimePoint made;               ///< When it was made.
    VoTimePoint expires;            ///< When it must not be relied on any more.
    VoDeque<Document> declarations; ///< The declarations documents.
    VoDeque<Package> packages;      ///< Those of which something holds.
    VoDeque<Release> releases;      ///< All that are declared, in the order of the declarations.
    /// What stands beside definitions and belongs to their releases. One that is not listed does not count.
    VoDeque<Document> documents;

    /// The release with both IDs; null when there is none.
    /// @{
    const Release* release(const VoUUID& packageID, const VoUUID& versionID) const;
    Release* release(const VoUUID& packageID, const VoUUID& versionID);
    /// @}
    /// The document with that path, of whichever kind; null when there is none.
    const Document* document(const VoFilePath& path) const;
    VoVersion lowest(const VoUUID& packageID) const; ///< The lowest release of a package; 0.0.0 when nothing is said.
    /// Raises the lowest release of a package; a lower one than now changes nothing.
    void raiseLowest(const VoUUID& packageID, const VoVersion& version);
    /// What signatures repeat in their trusted comment: "serial 7, expires 2026-12-22T03:00:00.000Z".
    VoString signedComment() const;

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;

private:
    void read(VoXMLStreamElementLoader& child);
    void validate() const;
};

} // namespace vo::updater
