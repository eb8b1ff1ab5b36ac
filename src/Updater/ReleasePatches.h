#pragma once

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Updater/ChunkListing.h>
#include <Updater/XMLObject.h>

#include <cstdint>
#include <memory>

struct VoDownloadPolicy;
class VoLocation;

namespace vo::updater {

class AbstractFileListing;
class AbstractPackage;

/// The patches that make files of a release of those that earlier releases had. It stands beside the definition, named
/// FileName, and a release need not have it.
///
///     <patches packageID versionID>
///         <patch id fileID size checksum beforeSize before afterSize after/> ...
///     </patches>
///
/// The patch with the ID X is the file "patches\X.vopatch" beside the definition, of the length `size` and the digest
/// `checksum`; lengths and digests of what it takes and of what it makes follow. A plain value.
class VOCORE_EXPORT ReleasePatches : public XMLObject
{
public:
    static constexpr const char* FileName = "patches.xml";  ///< Beside the definition.
    static constexpr const char* Directory = "patches";     ///< Where the patches are, beside the definition.
    static constexpr const char* Suffix = ".vopatch";       ///< Of their names.
    static constexpr std::uint64_t LargestSize = 16u << 20; ///< Bytes that the document may have.

    /// A content by its length and its digest.
    struct VOCORE_EXPORT Content
    {
        std::uint64_t size = 0; ///< In bytes.
        VoChecksum checksum;    ///< Its digest.
        /// Whether a file is listed with this content.
        bool isOf(const AbstractFileListing& file) const;
    };

    /// A patch of a file.
    struct VOCORE_EXPORT Patch
    {
        VoUUID id{""};             ///< Its own ID.
        VoUUID fileID{""};         ///< That of the file.
        std::uint64_t size = 0;    ///< Its length in bytes.
        VoChecksum checksum;       ///< Its digest.
        Content before;            ///< What it takes.
        Content after;             ///< What it makes.
        ChunkListing file() const; ///< Its file, as those of chunks are listed.
    };

    ReleasePatches(); ///< Of no release.
    /// Of a release, without patches.
    ReleasePatches(const VoUUID& package, const VoUUID& version);
    /// Reads a `patches` element.
    /// @throws VoValidationException as Parse()
    explicit ReleasePatches(VoXMLStreamElementLoader& element);
    /// @{ Values: copies are deep, a moved-from object is only good for being assigned to.
    ReleasePatches(const ReleasePatches& other);
    ReleasePatches(ReleasePatches&& other) noexcept;
    ReleasePatches& operator=(const ReleasePatches& other);
    ReleasePatches& operator=(ReleasePatches&& other) noexcept;
    ~ReleasePatches() override;
    /// @}

    /// Reads a document from memory; `name` is what errors and the log call it.
    /// @throws VoNullPointerException "Patches failed to load", for a document of another kind
    /// @throws VoValidationException "Invalid patches: " + what is wrong, for one that cannot be; and what malformed
    /// documents throw
    static ReleasePatches Parse(const VoString& bytes, const VoString& name);
    /// Reads the patches of a release from beside its definition, without asking a manifest. Null when there are none,
    /// and when they cannot be had for whatever reason, which the log tells: installing can do without.
    /// @throws VoUserCancelledException
    static std::shared_ptr<const ReleasePatches> Find(const AbstractPackage& release, const VoLocation& definition,
                                                      const VoStopFlag& stop, const VoDownloadPolicy& downloads);
    /// The whole document.
    VoString toDocument() const;

    VoUUID packageID{""};   ///< The package.
    VoUUID versionID{""};   ///< The release that the patches lead to.
    VoDeque<Patch> patches; ///< All of them.

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;

private:
    void validate() const;
};

} // namespace vo::updater
