#include <Updater/detail/publish/ManifestFolder.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/detail/documents/DocumentPlace.h>
#include <Updater/detail/documents/KeyChain.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <algorithm>
#include <set>
#include <string>

namespace vo::updater::detail {

namespace {

VoChecksum DigestOf(const VoString& bytes)
{
    vo::detail::Sha3 hash;
    hash.add(bytes.c_str(), bytes.size());
    return hash.finish();
}

// Documents have whole seconds, which are read as they were written.
VoTimePoint WholeSeconds(VoTimePoint instant)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(instant.timeSinceEpoch().toChrono());
    return VoTimePoint(VoTimeDuration(seconds));
}

ReleaseKeys KeysOf(const ReleaseSigning& signing)
{
    ReleaseKeys keys;
    for (const auto& key : signing.keys) {
        if (!keys.find(key->id()))
            keys.keys.pushBack({key->publicKey(), true, true});
    }
    return keys;
}

template <typename Step>
void Attempt(const char* what, Step step) noexcept
{
    try {
        step();
    } catch (...) {
        PublishingLog().error(what + CurrentExceptionText());
    }
}

} // namespace

ManifestFolder::ManifestFolder(const VoDirectoryPath& folder)
    : m_folder(folder)
{
    const DocumentPlace place(folder);
    const auto read = [&](const char* name, VoString& bytes) -> std::optional<ReleaseManifest> {
        auto found = place.find(VoFilePath(name), ReleaseManifest::LargestSize);
        if (!found)
            return std::nullopt;
        bytes = std::move(*found);
        return ReleaseManifest::Parse(bytes, place.nameOf(VoFilePath(name)));
    };
    m_current = read(ReleaseManifest::FileName, m_currentBytes);
    m_next = read(NextManifest, m_nextBytes);
    for (std::uint64_t number = 1;; ++number) {
        const VoFilePath name = ReleaseKeys::FileName(number);
        const auto bytes = place.find(name, ReleaseKeys::LargestSize);
        if (!bytes)
            break;
        m_keys = ReleaseKeys::Parse(*bytes, place.nameOf(name));
    }
}

std::optional<VoFilePath> ManifestFolder::copyName(const VoFilePath& relative, const VoString& bytes) const
{
    const ReleaseManifest::Document* listed = m_current ? m_current->document(relative) : nullptr;
    if (!listed || listed->size != bytes.size() || listed->checksum != DigestOf(bytes))
        return std::nullopt;
    return Suffixed(relative, "." + listed->checksum.toString());
}

std::uint64_t ManifestFolder::lastSerial() const
{
    return std::max({m_current ? m_current->serial : 0, m_next ? m_next->serial : 0, m_keys ? m_keys->serial : 0});
}

ReleaseManifest::Release ManifestFolder::entry(const VoFilePath& relative) const
{
    const VoString bytes = ReadDocument(path(relative));
    ReleaseManifest::Release release;
    release.path = relative;
    release.size = bytes.size();
    release.checksum = DigestOf(bytes);
    return release;
}

void ManifestFolder::list(ReleaseManifest& manifest, const VoFilePath& declarations, const ReleaseManifest& before,
                          const Change& change) const
{
    const VoString bytes = ReadDocument(path(declarations));
    const auto declared = AdvertisedPackages::Parse(bytes, path(declarations).path());
    if (!declared)
        FailLoading(path(declarations).path(), "Declarations failed to load");
    manifest.declarations.pushBack({declarations, bytes.size(), DigestOf(bytes)});
    for (const AdvertisedPackages::Declaration& declaration : declared->declarations()) {
        if (manifest.document(declaration.path()) || manifest.release(declaration.packageID(), declaration.versionID()))
            continue;                               // another document declares it as well
        declaration.definition(path(declarations)); // refuses one that leads elsewhere
        ReleaseManifest::Release release = entry(declaration.path());
        release.packageID = declaration.packageID();
        release.versionID = declaration.versionID();
        release.version = declaration.version();
        release.channel = change.terms.channel;
        release.share = change.terms.share;
        release.start = WholeSeconds(change.terms.start);
        release.from = change.terms.from;
        release.notes = change.terms.notes;
        if (const auto* known = before.release(release.packageID, release.versionID)) {
            if (known->checksum != release.checksum)
                throw VoValidationException("Definition was changed since it was signed: " +
                                            path(declaration.path()).path());
            release = *known;
        }
        manifest.releases.pushBack(release);
        listBeside(manifest, release, before);
    }
}

// What is listed once belongs to the release as its definition does: nobody else may add to it.
void ManifestFolder::listBeside(ReleaseManifest& manifest, const ReleaseManifest::Release& release,
                                const ReleaseManifest& before) const
{
    const bool isKnown = before.release(release.packageID, release.versionID) != nullptr;
    for (const char* name : OptionalDocuments) {
        const VoFilePath document = Beside(release.path, name);
        const bool isThere = VoFileSystem::Exists(path(document));
        if (isThere)
            manifest.documents.pushBack(entry(document));
        const ReleaseManifest::Document* listed = before.document(document);
        const bool isSame =
            isThere ? listed && listed->checksum == manifest.documents.back().checksum : listed == nullptr;
        if (isKnown && !isSame)
            throw VoValidationException("Document was changed since it was signed: " + path(document).path());
    }
}

ReleaseManifest ManifestFolder::listed(const Change& change) const
{
    const ReleaseManifest before = m_next ? *m_next : m_current ? *m_current : ReleaseManifest();
    ReleaseManifest manifest;
    manifest.packages = before.packages;
    list(manifest, change.declarations, before, change);
    for (const ReleaseManifest::Document& document : before.declarations) {
        if (document.path != change.declarations && VoFileSystem::Exists(path(document.path)))
            list(manifest, document.path, before, change);
    }
    for (const ReleaseManifest::Release& release : manifest.releases) {
        if (change.onlyRefresh && !(m_current && m_current->release(release.packageID, release.versionID)))
            throw VoValidationException("Release is not signed yet: " + path(release.path).path());
    }
    return manifest;
}

// Whether this very manifest waits for signatures, and for those of the keys at hand.
bool ManifestFolder::isWaiting(const ReleaseManifest& manifest, const ReleaseSigning& signing) const
{
    if (!m_next || signing.keys.empty() || m_next->expires < VoTimePoint::Now())
        return false;
    ReleaseManifest same = manifest;
    same.serial = m_next->serial;
    same.made = m_next->made;
    same.expires = m_next->expires;
    return same.toDocument().equal(m_nextBytes, VoString::CaseSensitive) &&
           SignersOfManifest(m_nextBytes, *m_next, KeysOf(signing), DocumentPlace(m_folder)).count == 0;
}

void ManifestFolder::requireSigners(const ReleaseSigning& signing) const
{
    const ReleaseKeys keys = m_keys ? *m_keys : KeysOf(signing);
    for (const auto& key : signing.keys) {
        const ReleaseKeys::Key* known = keys.find(key->id());
        if (!known || !known->signsReleases || known->key != key->publicKey())
            throw VoInvalidCallException("Key does not sign releases here: " + key->id());
    }
}

ManifestState ManifestFolder::update(const Change& change, const ReleaseSigning& signing)
{
    requireSigners(signing);
    const ReleaseKeys keys = m_keys ? *m_keys : KeysOf(signing);
    ReleaseManifest manifest = listed(change);
    if (change.edit)
        change.edit(manifest);
    VoString bytes = m_nextBytes;
    if (!change.edit && isWaiting(manifest, signing)) {
        manifest = *m_next;
    } else {
        manifest.serial = lastSerial() + 1;
        manifest.made = WholeSeconds(signing.now == VoTimePoint() ? VoTimePoint::Now() : signing.now);
        manifest.expires = manifest.made + signing.lifetime;
        bytes = manifest.toDocument();
    }
    writeSignatures(bytes, manifest, signing);
    ManifestState state{manifest.serial, manifest.expires, 0, keys.keys.isEmpty() ? 0 : keys.releaseThreshold, true};
    state.signatures = SignersOfManifest(bytes, manifest, keys, DocumentPlace(m_folder)).count;
    state.isInEffect = state.signatures >= state.needed;
    if (state.isInEffect)
        putInEffect(bytes, manifest, signing);
    else
        WriteBytes(path(VoFilePath(NextManifest)), bytes);
    return state;
}

// Under names that no other manifest's signatures have: whoever meets this manifest finds them, whenever he comes.
void ManifestFolder::writeSignatures(const VoString& bytes, const ReleaseManifest& manifest,
                                     const ReleaseSigning& signing) const
{
    for (const auto& key : signing.keys) {
        const auto signature = key->sign(bytes.c_str(), bytes.size(), manifest.signedComment());
        WriteBytes(path(SerialSignatureName(key->id(), manifest.serial)), signature.toString());
    }
}

void ManifestFolder::putInEffect(const VoString& bytes, const ReleaseManifest& manifest, const ReleaseSigning& signing)
{
    WriteBytes(path(VoFilePath(ReleaseManifest::FileName)), bytes);
    Attempt("Signatures of the manifest cannot be completed: ", [&] {
        writePlainSignatures(manifest);
        if (!m_keys && !signing.keys.empty())
            writeFirstKeys(manifest, signing);
        VoFileSystem::Remove(path(VoFilePath(NextManifest)));
        VoFileSystem::SyncDirectory(m_folder);
    });
    Attempt("Former signatures cannot be removed: ", [&] { clean(manifest); });
    m_current = manifest;
    m_currentBytes = bytes;
    m_next.reset();
}

void ManifestFolder::writePlainSignatures(const ReleaseManifest& manifest) const
{
    const DocumentPlace place(m_folder);
    VoFileSystem::ForEachFile(m_folder, false, false, [&](const VoFilePath& file) {
        const std::string name = VoString(file.filename()).toStdString();
        const std::string start = std::string(ReleaseManifest::FileName) + ".";
        const std::string end = "." + VoString(manifest.serial).toStdString() + ".minisig";
        if (name.size() <= start.size() + end.size() || name.compare(0, start.size(), start) != 0 ||
            name.compare(name.size() - end.size(), end.size(), end) != 0)
            return;
        const std::string keyId = name.substr(start.size(), name.size() - start.size() - end.size());
        WriteBytes(path(SignatureName(VoFilePath(ReleaseManifest::FileName), VoString(keyId))), ReadDocument(file));
    });
}

void ManifestFolder::writeFirstKeys(const ReleaseManifest& manifest, const ReleaseSigning& signing)
{
    ReleaseKeys first = KeysOf(signing);
    first.number = 1;
    first.serial = manifest.serial;
    SignKeys(m_folder, first, nullptr, signing);
    WriteBytes(path(ReleaseKeys::FileName(1)), first.toDocument());
    m_keys = first;
}

// Leaves what clients may have begun to read: the manifest before this one, and what it lists.
void ManifestFolder::clean(const ReleaseManifest& manifest) const
{
    const std::string start = std::string(ReleaseManifest::FileName) + ".";
    const auto isKept = [&](const std::string& name) {
        if (name.compare(0, start.size(), start) == 0) {
            const std::string middle = name.substr(start.size(), name.find(".minisig") - start.size());
            const std::size_t dot = middle.find('.');
            if (dot == std::string::npos)
                return !m_keys || m_keys->find(VoString(middle)) != nullptr;
            const VoString serial(middle.substr(dot + 1));
            return serial == VoString(manifest.serial) || (m_current && serial == VoString(m_current->serial));
        }
        for (const ReleaseManifest::Document& document : m_current ? m_current->declarations : manifest.declarations) {
            if (name == document.path.path().toStdString() + "." + document.checksum.toString().toStdString())
                return true;
        }
        return false;
    };
    std::set<std::string> documents;
    for (const ReleaseManifest::Document& document : manifest.declarations)
        documents.insert(document.path.path().toStdString());
    VoFileSystem::ForEachFile(m_folder, false, false, [&](const VoFilePath& file) {
        const std::string name = VoString(file.filename()).toStdString();
        constexpr std::size_t digestLength = 65; // with the dot
        const bool isSignature = name.compare(0, start.size(), start) == 0 && name.size() > 8 &&
                                 name.compare(name.size() - 8, 8, ".minisig") == 0;
        const bool isCopy =
            name.size() > digestLength && documents.count(name.substr(0, name.size() - digestLength)) != 0;
        if ((isSignature || isCopy) && !isKept(name))
            VoFileSystem::Remove(file);
    });
}

std::uint64_t ManifestFolder::signersOfCurrent(const ReleaseKeys& keys) const
{
    return m_current ? SignersOfManifest(m_currentBytes, *m_current, keys, DocumentPlace(m_folder)).count : 0;
}

void ManifestFolder::cosign(const ReleaseSigning& signing, const ReleaseKeys& keys)
{
    if (!m_current)
        return;
    ReleaseSigning own = signing;
    own.keys.erase(std::remove_if(own.keys.begin(), own.keys.end(),
                                  [&](const auto& key) {
                                      const ReleaseKeys::Key* known = keys.find(key->id());
                                      return !known || !known->signsReleases || known->key != key->publicKey();
                                  }),
                   own.keys.end());
    writeSignatures(m_currentBytes, *m_current, own);
    writePlainSignatures(*m_current);
}

void SignKeys(const VoDirectoryPath& folder, const ReleaseKeys& keys, const ReleaseKeys* before,
              const ReleaseSigning& signing)
{
    const VoString bytes = keys.toDocument();
    const auto counts = [](const ReleaseKeys* set, const signing::SecretKey& key) {
        const ReleaseKeys::Key* known = set ? set->find(key.id()) : nullptr;
        return known && known->signsKeys && known->key == key.publicKey();
    };
    for (const auto& key : signing.keys) {
        if (!counts(&keys, *key) && !counts(before, *key))
            throw VoInvalidCallException("Key does not sign keys here: " + key->id());
        const auto signature = key->sign(bytes.c_str(), bytes.size(), keys.signedComment());
        const VoFilePath name = SignatureName(ReleaseKeys::FileName(keys.number), key->id());
        WriteBytes(folder.appended(name), signature.toString());
    }
}

} // namespace vo::updater::detail
