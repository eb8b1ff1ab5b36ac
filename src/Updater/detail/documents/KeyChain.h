#pragma once

// Which signatures count, and which keys. The one place that decides.

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Updater/ReleaseKeys.h>
#include <Updater/detail/documents/DocumentPlace.h>

#include <cstdint>
#include <functional>

namespace vo::updater {
class ReleaseManifest;
}

namespace vo::updater::detail {

/// The names of signatures beside a document:
///
///     manifest.xml.<key ID>.minisig             of the manifest that is in effect
///     manifest.xml.<key ID>.<serial>.minisig    the same, written before the manifest is replaced: two files cannot be
///                                               replaced at once, and whoever meets the new manifest beside the old
///                                               signature takes this one
///     keys.<n>.xml.<key ID>.minisig             of a document of keys, which is never replaced
/// @{
VOCORE_PRIVATE_EXPORT VoFilePath SignatureName(const VoFilePath& document, const VoString& keyId);
VOCORE_PRIVATE_EXPORT VoFilePath SerialSignatureName(const VoString& keyId, std::uint64_t serial);
/// @}

/// What a key may sign.
enum class KeyRole
{
    Releases,
    Keys
};

/// The keys of a set that have signed bytes.
struct Signers
{
    std::uint64_t count = 0; ///< How many keys of the set and the role have signed.
    VoString why;            ///< Of a signature that does not count, what is wrong with it; empty when there is none.
};

/// Who has signed `bytes` with `comment`, by the texts of the signatures that `find` gives for a key's ID: the first
/// that fits counts.
VOCORE_PRIVATE_EXPORT Signers SignersOf(const VoString& bytes, const VoString& comment, const ReleaseKeys& keys,
                                        KeyRole role,
                                        const std::function<VoDeque<VoString>(const VoString& keyId)>& find);

/// Who has signed a manifest, by the signatures at a place.
VOCORE_PRIVATE_EXPORT Signers SignersOfManifest(const VoString& bytes, const ReleaseManifest& manifest,
                                                const ReleaseKeys& keys, const DocumentPlace& place);
/// Who has signed a document of keys, by the signatures at a place.
VOCORE_PRIVATE_EXPORT Signers SignersOfKeys(const VoString& bytes, const ReleaseKeys& document, const ReleaseKeys& keys,
                                            const DocumentPlace& place);

/// The newest keys at a place, from known ones on: each next number must be signed by enough of its own and of the
/// number before. From number 0, the keys that an application knows, it goes on with the first that these have signed.
/// @throws VoUntrustedReleaseException (Keys)
VOCORE_PRIVATE_EXPORT ReleaseKeys NewestKeys(const ReleaseKeys& known, const DocumentPlace& place);

} // namespace vo::updater::detail
