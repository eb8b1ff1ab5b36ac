#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <Download/VoDownloadPolicy.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/TrustPolicy.h>

#include <memory>

namespace vo::updater {

class ReleaseProof;

/// A folder of releases as an installation may see it: every document is read once, into memory, and compared with the
/// manifest there; the manifest is believed when the keys have signed that the policy, or the last installation of the
/// package, names.
///
///     TrustPolicy policy;
///     policy.keys.pushBack(signing::PublicKey::Parse(keyOfTheApplication));
///     const auto releases = TrustedReleases::Open(url, policy, stop, downloads);
///     auto release = releases.open(releases.newest(packageID));
///     InstallationOptions options;
///     options.proof = release.proof;
///     InstalledPackages::Install(std::move(release.package), definition, directory, stop, options);
///
/// A package that was installed with a proof is bound to its publisher: what is remembered of him (keys, the highest
/// manifest, the lowest release) decides from then on, whatever the policy says, until the package is uninstalled.
///
/// A refusal is a VoUntrustedReleaseException. A folder without a manifest is taken as it is, unless a
/// signature is required. May be called on any thread; one object by one thread at a time.
class VOCORE_EXPORT TrustedReleases
{
public:
    /// A definition that may be installed.
    struct VOCORE_EXPORT Release
    {
        VoUniquePtr<AdvertisedPackageListing> package; ///< The definition, as it was checked.
        VoLocation definition;                         ///< Where it stands.
        std::shared_ptr<const ReleaseProof> proof;     ///< For InstallationOptions; null when nothing was verified.
    };

    /// Opens a declarations document, or a definition.
    /// @throws VoUntrustedReleaseException for one that is not what the manifest beside it lists; and what reading
    /// documents throws
    static TrustedReleases Open(const VoLocation& document, const TrustPolicy& policy = TrustPolicy(),
                                VoStopFlag stop = VoStopFlag(), const VoDownloadPolicy& downloads = VoDownloadPolicy());
    TrustedReleases(TrustedReleases&& other) noexcept;            ///< Leaves one that can only be assigned to.
    TrustedReleases& operator=(TrustedReleases&& other) noexcept; ///< Leaves one that can only be assigned to.
    ~TrustedReleases();

    const AdvertisedPackages* declarations() const; ///< Null when a definition was opened.
    const ReleaseManifest* manifest() const;        ///< Null when there is none.

    /// Whether the releases of a package were verified; false when neither the policy nor an installation asks for it.
    /// @throws VoUntrustedReleaseException when what is asked for does not hold
    bool verify(const VoUUID& packageID) const;

    /// Why a release is not offered to this installation: withdrawn, of a channel that it does not follow, not rolled
    /// out yet or not to this one, older than the lowest, or no update for what is installed. Empty when it is. A
    /// release that is installed here counts as rolled out.
    VoString whyNotOffered(const AbstractPackage& release) const;
    /// The release of a package with the highest version of those that are offered.
    /// @throws VoNotFoundException for a package of which none is declared
    /// @throws VoUntrustedReleaseException (NotOffered), with the reason of the newest, when none is offered
    const AdvertisedPackages::Declaration& newest(const VoUUID& packageID) const;

    /// Reads the definition of a declared release.
    /// @throws VoUntrustedReleaseException also when it is not offered
    /// @throws VoValidationException "Invalid package definition: not the declared release: " + where it stands
    Release open(const AdvertisedPackages::Declaration& declaration) const;
    /// The definition of a declared release, offered or not.
    /// @throws VoValidationException as open(); VoUntrustedReleaseException is one
    VoUniquePtr<AdvertisedPackageListing> read(const AdvertisedPackages::Declaration& declaration) const;
    /// The definition that was opened, offered or not.
    /// @throws VoInvalidCallException "No definition was opened"
    /// @throws VoNullPointerException "Package advert failed to load", for a document of another kind
    VoUniquePtr<AdvertisedPackageListing> readDefinition() const;
    /// The definition that was opened.
    /// @throws VoUntrustedReleaseException also when it is not offered; and as readDefinition()
    Release openDefinition() const;

private:
    class Private;
    explicit TrustedReleases(std::unique_ptr<Private> state) noexcept;

    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater
