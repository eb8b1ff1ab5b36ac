#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/ReleaseKeys.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/ReleaseSigning.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace vo::updater {

/// Signs what is published beside a declarations document, and changes to whom it is offered.
///
///     <folder>\manifest.xml                              the manifest in effect
///             \manifest.xml.<key ID>.minisig             its signatures, one a key
///             \manifest.xml.<key ID>.<serial>.minisig    the same, there before the manifest is
///             \manifest.next.xml                         one that waits for more signatures
///             \keys.<n>.xml, keys.<n>.xml.<key ID>.minisig
///             \keys.next.xml                             keys that wait for more signatures
///             \<document>.<digest>                       what the manifest in effect lists, while a newer one is there
///
/// A folder that was signed once stays signed: what is changed without a key, or with fewer than have to sign, waits in
/// the document "next", and clients go on seeing the former state until enough keys have signed. A process may be
/// killed at any moment: the manifest in effect, its signatures and all that it lists stay readable.
///
/// Each operation waits for others who publish there.
/// @throws VoInvalidCallException ("Key does not sign releases here: " + ID), by all that sign
/// @throws VoValidationException ("Definition was changed since it was signed: " + path); and, by all, what reading and
/// writing files throws
class VOCORE_EXPORT ReleaseSigner
{
public:
    /// `waiting` is called again and again while others publish there, and may end that by throwing; may be empty.
    ReleaseSigner(const VoFilePath& declarations, ReleaseSigning signing, std::function<void()> waiting = {});

    /// The manifest that holds or, when one waits for signatures, that one; none in a folder without.
    std::optional<ReleaseManifest> manifest() const;
    /// The newest keys of the folder; none before it was signed.
    std::optional<ReleaseKeys> keys() const;

    /// Signs all that is declared, with a new expiry; the first time the keys at hand become those of the folder. A
    /// manifest that waits for signatures is signed as it is, unless something has changed since. With `onlyRefresh`
    /// nothing may be declared that the manifest in effect does not list: a timer must not vouch for what somebody else
    /// has put there.
    /// @throws VoValidationException ("Release is not signed yet: " + path), with `onlyRefresh`
    ManifestState sign(bool onlyRefresh = false) const;
    /// Changes the manifest: `edit` gets that of manifest(), with all that is declared. Makes one where there is none.
    ManifestState change(const std::function<void(ReleaseManifest&)>& edit) const;

    /// How the keys of a folder are to be changed. A plain value.
    struct VOCORE_EXPORT KeyChange
    {
        VoDeque<ReleaseKeys::Key> added;               ///< New ones, or other roles for those of the same ID.
        VoDeque<VoString> removed;                     ///< The IDs of those that count no more.
        std::optional<std::uint64_t> releaseThreshold; ///< How many have to sign manifests.
        std::optional<std::uint64_t> keyThreshold;     ///< How many have to sign keys.
    };
    /// What became of it.
    struct VOCORE_EXPORT KeyState
    {
        ReleaseKeys keys;                  ///< The new keys.
        bool isInEffect = false;           ///< Whether clients see them already; if not, they wait for signatures.
        std::uint64_t missingOwn = 0;      ///< Signatures by the new keys that are missing.
        std::uint64_t missingBefore = 0;   ///< Signatures by the former keys that are missing.
        std::uint64_t missingManifest = 0; ///< Signatures of the manifest by the new keys that are missing.
    };
    /// Makes the next keys of the folder and signs them with the keys at hand, and with these the manifest in effect as
    /// well, so that clients accept it before and after. An empty change goes on with keys that wait for signatures.
    /// @throws VoInvalidParameterException "No such key: " + ID, "Nothing to change"
    /// @throws VoValidationException as ReleaseKeys::Parse()
    KeyState rotate(const KeyChange& change) const;

    /// What a clearing removes. A plain value.
    struct VOCORE_EXPORT Clearing
    {
        VoDeque<VoString> releases; ///< Releases that are not declared any more, as texts.
        std::uint64_t files = 0;    ///< Files that nothing refers to, leftovers among them.
        std::uint64_t folders = 0;  ///< Private folders of killed runs.
        std::uint64_t bytes = 0;    ///< All they hold.
        ManifestState manifest;     ///< How the manifest stands.
    };
    /// Keeps the newest `keep` releases of each package that the document declares, and removes all files that no
    /// declarations document of the folder and neither manifest refers to, and what killed runs left. Files that are
    /// not the library's stay. With `onlyLook` tells what would be removed.
    Clearing clear(std::size_t keep, bool onlyLook) const;

private:
    VoFilePath m_declarations;
    ReleaseSigning m_signing;
    std::function<void()> m_waiting;
};

} // namespace vo::updater
