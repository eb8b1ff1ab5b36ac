#pragma once

// The releases that are staged, one of each package at most:
//
//     <update directory>\staged\<packageID>.xml                            which it is; replacing this decides
//     <update directory>\staged\<packageID>\release-<versionID>\package.xml     its definition
//                                                              \attributes.xml  where there are any
//                                                              \<checksum>.file
//     <update directory>\staged\<packageID>\chunks\                         while it is being staged
//
// Nothing that is read from there is believed: the definition is checked as one from a server is, and each file's
// digest when it is copied to its place.

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoLocation.h>
#include <Updater/AbstractPackage.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstallationOptions.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/StagedInstallation.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace vo::updater::detail {

/// What is noted of a staged release.
class StagedRelease final : public AbstractPackage
{
public:
    StagedRelease() = default;
    /// `installed` is what it is staged over; null for nothing.
    StagedRelease(const AdvertisedPackageListing& advert, const InstalledPackageListing* installed);
    explicit StagedRelease(VoXMLStreamElementLoader& element);

    VoDirectoryPath directory;       ///< Where it is going to be installed.
    VoLocation definition;           ///< Where it came from.
    VoUUID installedVersionID{""};   ///< The release that it is staged over; empty for none.
    VoVersion installedVersion;      ///< The version of that.
    VoDirectoryPath installedBefore; ///< Where that is installed; null for none.
    VoChecksum digest;               ///< Of the document of its definition.
    VoChecksum attributesDigest;     ///< Of the document of its attributes; that of no bytes when there are none.
    std::uint64_t files = 0;         ///< How many files are staged.
    std::uint64_t bytes = 0;         ///< Their length.
    InstallationOptions options;     ///< What it was staged with: what is refused, and the proof.

    VoDirectoryPath folder() const;     ///< Where its files are.
    VoFilePath definitionPath() const;  ///< Where its definition is kept.
    VoFilePath attributesPath() const;  ///< Where its attributes are kept, when there are any.
    StagedInstallation summary() const; ///< What others are told.

    /// Keeps the definition and its attributes in the folder, which must be there, and notes their digests.
    void keepDefinition(const AdvertisedPackageListing& advert);
    /// The definition, with its attributes.
    /// @throws VoStagedReleaseException when they are not those that were staged
    VoUniquePtr<AdvertisedPackageListing> openDefinition() const;
    /// Whether it is what is installed: a commit was interrupted after it was recorded.
    bool isInstalled(const InstalledPackageListing* installed) const;
    /// Whether what is installed is what it was staged over.
    bool fits(const InstalledPackageListing* installed) const;
    /// @throws VoStagedReleaseException when something else is installed than what it was staged over
    void requireFitting(const InstalledPackageListing* installed) const;
    /// @throws VoUntrustedReleaseException when the manifest that vouched for it has expired
    void requireFresh() const;

    Type objectType() const override { return Type::StagedRelease; }
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;
};

/// Where chunks are gathered for a staging of a package.
VoDirectoryPath StagingChunksPath(const VoUUID& packageID);

/// Keeps others from staging the same package, unless another does already.
class StagingLock
{
public:
    explicit StagingLock(const VoUUID& packageID);

    bool isHeld() const noexcept { return m_lock.isHeld(); }

private:
    VoFileLock m_lock;
};

/// Keeps what is staged from being replaced or removed, as long as it lives; waits for others.
class StagedLock
{
public:
    StagedLock();

private:
    VoFileLock m_lock;
};

/// The packages of which a release is staged, in the order of their names.
VoDeque<VoUUID> StagedPackages();
/// What is staged of a package; none when nothing is.
/// @throws VoStagedReleaseException when the record of it cannot be used
std::optional<StagedRelease> ReadStaged(const VoUUID& packageID);
/// Makes it the staged release of its package, and erases what was staged before.
void WriteStaged(const StagedRelease& staged, const StagedLock&);
/// Whether anything is there that EraseStaged() would erase.
bool HasStaged(const VoUUID& packageID);
/// Erases what is staged of a package, and what an interrupted staging left unless one is at work. False when there was
/// nothing.
bool EraseStaged(const VoUUID& packageID, const StagedLock&);

} // namespace vo::updater::detail
