#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/ReleaseKeys.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/ReleaseSigning.h>

#include <functional>
#include <optional>

namespace vo::updater {
class AdvertisedPackageListing;
}

namespace vo::updater::detail {

/// The manifest, signatures and keys of a folder of releases, on the publisher's side (ReleaseSigner.h tells the
/// names). Read when it is made; to be changed under the publishing lock only.
class VOCORE_PRIVATE_EXPORT ManifestFolder
{
public:
    static constexpr const char* NextManifest = "manifest.next.xml";
    static constexpr const char* NextKeys = "keys.next.xml";

    /// Throws what reading the documents throws.
    explicit ManifestFolder(const VoDirectoryPath& folder);

    const std::optional<ReleaseManifest>& current() const { return m_current; } ///< In effect.
    const std::optional<ReleaseManifest>& next() const { return m_next; }       ///< That waits for signatures.
    const std::optional<ReleaseKeys>& keys() const { return m_keys; }           ///< The newest in effect.
    bool exists() const { return m_current || m_next || m_keys; }

    /// The name of the copy to be kept of a file, relative to the folder, before it is replaced; none when the manifest
    /// in effect does not list these bytes.
    std::optional<VoFilePath> copyName(const VoFilePath& relative, const VoString& bytes) const;

    /// @throws VoInvalidCallException ("Key does not sign releases here: " + ID) for a key that does not count
    void requireSigners(const ReleaseSigning& signing) const;

    /// The change of a manifest.
    struct Change
    {
        VoFilePath declarations;                    ///< A declarations document, relative, that must be listed.
        ReleaseTerms terms;                         ///< Of releases that no manifest lists so far.
        std::function<void(ReleaseManifest&)> edit; ///< May be empty: only the documents and the expiry.
        bool onlyRefresh = false;                   ///< Refuse releases that the manifest in effect does not list.
    };
    /// Lists all that is declared now, changes, signs, and puts the manifest in effect when enough keys have signed.
    /// What fails after that moment is logged only.
    ManifestState update(const Change& change, const ReleaseSigning& signing);

    /// Signs the manifest in effect also with these keys. Its bytes stay as they are.
    void cosign(const ReleaseSigning& signing, const ReleaseKeys& keys);
    /// How many of the keys have signed the manifest in effect.
    std::uint64_t signersOfCurrent(const ReleaseKeys& keys) const;

    VoFilePath path(const VoFilePath& relative) const { return m_folder.appended(relative); }

private:
    ReleaseManifest listed(const Change& change) const;
    void list(ReleaseManifest& manifest, const VoFilePath& declarations, const ReleaseManifest& before,
              const Change& change) const;
    void listBeside(ReleaseManifest& manifest, const ReleaseManifest::Release& release,
                    const ReleaseManifest& before) const;
    ReleaseManifest::Release entry(const VoFilePath& relative) const;
    bool isWaiting(const ReleaseManifest& manifest, const ReleaseSigning& signing) const;
    std::uint64_t lastSerial() const;
    void writeSignatures(const VoString& bytes, const ReleaseManifest& manifest, const ReleaseSigning& signing) const;
    void putInEffect(const VoString& bytes, const ReleaseManifest& manifest, const ReleaseSigning& signing);
    void writePlainSignatures(const ReleaseManifest& manifest) const;
    void writeFirstKeys(const ReleaseManifest& manifest, const ReleaseSigning& signing);
    void clean(const ReleaseManifest& manifest) const;

    const VoDirectoryPath m_folder;
    std::optional<ReleaseManifest> m_current;
    VoString m_currentBytes;
    std::optional<ReleaseManifest> m_next;
    VoString m_nextBytes;
    std::optional<ReleaseKeys> m_keys;
};

/// Signs a document of keys with those of the keys at hand that it, or `before`, knows for that.
void SignKeys(const VoDirectoryPath& folder, const ReleaseKeys& keys, const ReleaseKeys* before,
              const ReleaseSigning& signing);

} // namespace vo::updater::detail
