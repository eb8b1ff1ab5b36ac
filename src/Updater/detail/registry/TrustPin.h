#pragma once

// What is remembered of the publisher of an installed package whose releases were verified once:
//
//     <update directory>\installed\<packageID>.pin
//
//         <pin id origin serial lowest>
//             <keys .../>       as ReleaseKeys
//         </pin>
//
// It is never taken for missing when it cannot be read: the package would go over to anybody.

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Updater/ReleaseKeys.h>
#include <Updater/XMLObject.h>

#include <cstdint>
#include <optional>

namespace vo::updater {
class AdvertisedPackageListing;
class InstalledPackageListing;
class ReleaseProof;
} // namespace vo::updater

namespace vo::updater::detail {

/// One package's record. A plain value.
class VOCORE_PRIVATE_EXPORT TrustPin : public XMLObject
{
public:
    TrustPin() = default;
    explicit TrustPin(VoXMLStreamElementLoader& element);

    VoUUID packageID{""};
    VoString origin;          ///< Where the releases were found; for people.
    std::uint64_t serial = 0; ///< The highest manifest seen.
    VoVersion lowest;         ///< The lowest release that may be installed.
    ReleaseKeys keys;         ///< The newest ones seen.

    /// Takes over what a newer one knows; false when that changes nothing. `other` has the same keys or later ones.
    bool raise(const TrustPin& other);

    Type objectType() const override { return Type::TrustPin; }
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;
};

/// The record of a package; none when there is none.
/// @throws VoUntrustedReleaseException (Publisher) when it cannot be read
/// @throws VoValidationException for an ID that cannot be a file's name
VOCORE_PRIVATE_EXPORT std::optional<TrustPin> ReadPin(const VoUUID& packageID);
/// Remembers what was seen of a package that has a record, if that is of the same publisher still. What fails is
/// logged: the next installation does the same and fails.
VOCORE_PRIVATE_EXPORT void RaisePin(const TrustPin& seen);
/// Forgets a package. Throws what removing a file throws.
void ForgetPin(const VoUUID& packageID);

/// Decides whether a release may be installed over `installed` (null: nothing), and changes nothing. Without a proof
/// only a package that has no record may.
/// @throws VoUntrustedReleaseException
void RequireAdmissible(const AdvertisedPackageListing& advert, const ReleaseProof* proof,
                       const InstalledPackageListing* installed);
/// Decides the same under the registry's lock, and remembers the publisher.
/// @throws VoUntrustedReleaseException
void AdmitRelease(const AdvertisedPackageListing& advert, const ReleaseProof* proof,
                  const InstalledPackageListing* installed);
/// Decides whether a definition may repair an installed package: for one with a record it must be that of the installed
/// files.
/// @throws VoUntrustedReleaseException
void AdmitRepair(const AdvertisedPackageListing& advert, const InstalledPackageListing& installed);

} // namespace vo::updater::detail
