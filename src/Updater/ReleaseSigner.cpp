#include <Updater/ReleaseSigner.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/detail/documents/DocumentPlace.h>
#include <Updater/detail/documents/KeyChain.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/publish/Clearance.h>
#include <Updater/detail/publish/Publication.h>
#include <Updater/detail/publish/PublishingFolder.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace vo::updater {

using namespace detail;

namespace {

// The document must be there: who signs nothing has mistyped its name.
Publication Enter(const VoFilePath& declarations, const std::function<void()>& waiting)
{
    if (!VoFileSystem::Exists(declarations))
        throw VoFileNotFoundException(declarations);
    return Publication(declarations, [&waiting] {
        if (waiting)
            waiting();
    });
}

VoFilePath NameOf(const VoFilePath& declarations)
{
    return VoFilePath(VoString(declarations.filename()));
}

void Apply(ReleaseKeys& keys, const ReleaseSigner::KeyChange& change)
{
    const auto remove = [&keys](const VoString& id) {
        const auto isIt = [&id](const ReleaseKeys::Key& key) { return key.key.id() == id; };
        keys.keys.erase(std::remove_if(keys.keys.begin(), keys.keys.end(), isIt), keys.keys.end());
    };
    for (const VoString& id : change.removed) {
        if (!keys.find(id))
            throw VoInvalidParameterException("No such key: " + id);
        remove(id);
    }
    for (const ReleaseKeys::Key& key : change.added) {
        remove(key.key.id());
        keys.keys.pushBack(key);
    }
    keys.releaseThreshold = change.releaseThreshold.value_or(keys.releaseThreshold);
    keys.keyThreshold = change.keyThreshold.value_or(keys.keyThreshold);
}

std::uint64_t Missing(std::uint64_t needed, std::uint64_t there)
{
    return needed - std::min(needed, there);
}

bool IsEmpty(const ReleaseSigner::KeyChange& change)
{
    return change.added.isEmpty() && change.removed.isEmpty() && !change.releaseThreshold && !change.keyThreshold;
}

// Those that wait for signatures, or the former ones changed.
ReleaseKeys NextKeys(const ManifestFolder& folder, const ReleaseSigner::KeyChange& change)
{
    const VoFilePath waiting = folder.path(VoFilePath(ManifestFolder::NextKeys));
    if (IsEmpty(change)) {
        if (!VoFileSystem::Exists(waiting))
            throw VoInvalidParameterException("Nothing to change");
        return ReleaseKeys::Parse(ReadDocument(waiting, ReleaseKeys::LargestSize), waiting.path());
    }
    ReleaseKeys next = folder.keys().value_or(ReleaseKeys());
    Apply(next, change);
    ++next.number;
    next.serial = folder.current() ? folder.current()->serial : 0;
    next.validate();
    return next;
}

} // namespace

ReleaseSigner::ReleaseSigner(const VoFilePath& declarations, ReleaseSigning signing, std::function<void()> waiting)
    : m_declarations(declarations)
    , m_signing(std::move(signing))
    , m_waiting(std::move(waiting))
{
}

std::optional<ReleaseManifest> ReleaseSigner::manifest() const
{
    const ManifestFolder folder(m_declarations.parent());
    return folder.next() ? folder.next() : folder.current();
}

std::optional<ReleaseKeys> ReleaseSigner::keys() const
{
    return ManifestFolder(m_declarations.parent()).keys();
}

ManifestState ReleaseSigner::sign(bool onlyRefresh) const
{
    if (m_signing.keys.empty())
        throw VoInvalidParameterException("No key to sign with");
    Publication publication = Enter(m_declarations, m_waiting);
    return publication.manifest().update({NameOf(m_declarations), ReleaseTerms(), {}, onlyRefresh}, m_signing);
}

ManifestState ReleaseSigner::change(const std::function<void(ReleaseManifest&)>& edit) const
{
    Publication publication = Enter(m_declarations, m_waiting);
    return publication.manifest().update({NameOf(m_declarations), ReleaseTerms(), edit, false}, m_signing);
}

ReleaseSigner::KeyState ReleaseSigner::rotate(const KeyChange& change) const
{
    Publication publication = Enter(m_declarations, m_waiting);
    ManifestFolder& folder = publication.manifest();
    const VoDirectoryPath directory = m_declarations.parent();
    const ReleaseKeys* before = folder.keys() ? &*folder.keys() : nullptr;
    KeyState state;
    state.keys = NextKeys(folder, change);
    const VoString bytes = state.keys.toDocument();
    SignKeys(directory, state.keys, before, m_signing);
    folder.cosign(m_signing, state.keys);
    const DocumentPlace place(directory);
    state.missingOwn = Missing(state.keys.keyThreshold, SignersOfKeys(bytes, state.keys, state.keys, place).count);
    if (before)
        state.missingBefore = Missing(before->keyThreshold, SignersOfKeys(bytes, state.keys, *before, place).count);
    if (folder.current())
        state.missingManifest = Missing(state.keys.releaseThreshold, folder.signersOfCurrent(state.keys));
    state.isInEffect = state.missingOwn + state.missingBefore + state.missingManifest == 0;
    if (!state.isInEffect) {
        WriteBytes(folder.path(VoFilePath(ManifestFolder::NextKeys)), bytes);
        return state;
    }
    WriteBytes(folder.path(ReleaseKeys::FileName(state.keys.number)), bytes);
    VoFileSystem::Remove(folder.path(VoFilePath(ManifestFolder::NextKeys)));
    return state;
}

ReleaseSigner::Clearing ReleaseSigner::clear(std::size_t keep, bool onlyLook) const
{
    Publication publication = Enter(m_declarations, m_waiting);
    ManifestFolder& folder = publication.manifest();
    Clearing clearing;
    auto [declarations, removed] = NewestOnly(publication.declarations(), keep);
    clearing.releases = removed;
    if (!removed.isEmpty() && !onlyLook)
        clearing.manifest = publication.redeclare(declarations, m_signing);
    Clearance clearance(m_declarations.parent());
    clearance.keep(declarations);
    clearance.keepOtherDeclarations(m_declarations);
    // Until enough keys have signed the next one, clients read what this one lists.
    if (folder.current() && !(onlyLook && !m_signing.keys.empty()))
        clearance.keep(*folder.current());
    std::vector<VoFilePath> files;
    clearance.find([&files](const VoFilePath& file) { files.push_back(file); });
    for (const VoFilePath& file : files) {
        clearing.bytes += VoFileSystem::FileSize(file);
        ++clearing.files;
        if (!onlyLook)
            VoFileSystem::Remove(file);
    }
    if (!onlyLook)
        clearance.removeEmptyFolders();
    const auto [folders, bytes] = RemoveDeadFolders(onlyLook);
    clearing.folders = folders;
    clearing.bytes += bytes;
    return clearing;
}

} // namespace vo::updater
