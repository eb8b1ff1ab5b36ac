#include <Updater/detail/install/UpdateTransaction.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/files/FileInstaller.h>
#include <Updater/detail/files/KeptFile.h>
#include <Updater/detail/files/LinkPlaces.h>
#include <Updater/detail/files/PathIndex.h>
#include <Updater/detail/registry/FileOwners.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

using Kind = PlaceChange::Kind;
using Phase = InstallationJournal::Phase;

std::string Key(const VoFilePath& path)
{
    return std::string(Bytes(path));
}

std::string Key(const VoAbstractPath& path)
{
    return std::string(Bytes(path));
}

bool IsBelow(const VoFilePath& path, const VoDirectoryPath& directory)
{
    const std::string_view text = Bytes(path);
    const std::string_view root = Bytes(directory);
    return text.size() > root.size() && text.compare(0, root.size(), root) == 0;
}

} // namespace

UpdateTransaction::UpdateTransaction(const AdvertisedPackageListing& advert, const InstalledPackageListing* installed,
                                     const VoDirectoryPath& directory, VoDeque<TargetFile> targets, FileOwners& owners,
                                     const InstallationJournal& journal)
    : m_advert(advert)
    , m_installed(installed)
    , m_directory(directory)
    , m_targets(std::move(targets))
    , m_owners(owners)
    , m_journal(journal)
{
}

UpdateTransaction::~UpdateTransaction() = default;

// Each of the first steps needs what those before it found: which old files go decides what is in the way, what is in
// the way decides which directories are made, and all of it which are empty in the end. They only look.
void UpdateTransaction::begin()
{
    readLeft();
    indexDirectories();
    findRemovals();
    findReplacements();
    findDirectories();
    findEmptied();
    completeNotes();
    if (m_notes.changes.isEmpty() && m_notes.made.isEmpty() && m_notes.emptied.isEmpty() && m_notes.leftovers.isEmpty())
        return;
    m_hasNoted = true;
    m_journal.begin(m_notes);
    // From here on a killed run is undone by the notes: nothing may be changed that they do not have.
    for (const VoDirectoryPath& directory : m_missing) {
        const VoFilePath place = AsFile(directory);
        const auto obstacle = m_removalOf.find(Key(place));
        if (obstacle != m_removalOf.end())
            MoveAside(place, m_notes.changes[obstacle->second].aside);
        MakeDirectory(directory);
    }
}

// A run that dies between the two renamings of a place leaves it empty: its note says that the old file is aside. When
// this ends the renamings are on disk, as the journal is going to say.
void UpdateTransaction::place(const std::function<void(const TargetFile&, const VoFilePath& place)>& onPlaced)
{
    auto number = m_writtenNotes.begin();
    for (const TargetFile& target : m_targets) {
        if (!target.isWritten)
            continue;
        const PlaceChange change = m_notes.changes[*number++];
        if (change.kind == Kind::Replaced)
            MoveAside(change.place, change.aside);
        else if (KindOf(change.place) != FileKind::None) // since the run began
            throw VoFileException("File in the way: " + change.place.path(), change.place);
        PutInPlace(BuiltPath(change.place), change.place);
        onPlaced(target, change.place);
    }
    for (const PlaceChange& change : m_notes.changes) {
        // Where a directory had to be made, the file has gone already.
        if (change.kind == Kind::Removed && m_neededKeys.count(Key(AsDirectory(change.place))) == 0)
            MoveAside(change.place, change.aside);
    }
    syncDirectories();
}

void UpdateTransaction::commit(const Recorder& record)
{
    if (!m_hasNoted) {
        if (record)
            record(m_notes.result);
        return;
    }
    // This renaming decides: before it a killed run is undone, after it the new files stay and what is left is to
    // record them and to erase the old ones. It is taken back only when recording has thrown.
    m_journal.change(Phase::Pending, record ? Phase::Placed : Phase::Replaced);
    m_isDecided = true;
    bool isRecorded = true;
    if (record) {
        try {
            isRecorded = record(m_notes.result);
        } catch (...) {
            m_journal.change(Phase::Placed, Phase::Pending);
            m_isDecided = false;
            throw;
        }
    }
    try {
        if (record && isRecorded)
            m_journal.change(Phase::Placed, Phase::Replaced);
        // Not recorded wholly: the notes stay in the phase "placed", and the next operation records them again.
        if (EraseOld(m_notes) && isRecorded)
            m_journal.remove(Phase::Replaced);
    } catch (...) {
        Log().warning("Old files are left to the next operation: " + CurrentExceptionText());
    }
}

void UpdateTransaction::rollBack() noexcept
{
    if (!m_hasNoted || m_isDecided)
        return;
    try {
        if (Undo(m_notes))
            m_journal.remove(Phase::Pending);
    } catch (...) {
        Log().error("Cannot undo the installation: " + CurrentExceptionText());
    }
}

InstalledPackageListing UpdateTransaction::takeListing()
{
    return std::move(m_notes.result);
}

VoFilePath UpdateTransaction::placeOf(const TargetFile& target) const
{
    return target.file ? m_directory.appended(target.file->target()) : target.place;
}

// Compared piece by piece, as nearly all files of a release stay where they are.
bool UpdateTransaction::isAtTarget(std::string_view path, const TargetFile& target) const
{
    const std::string_view root = Bytes(m_directory);
    return path.substr(0, root.size()) == root && path.substr(root.size()) == ListedFile(*target.file).path();
}

void UpdateTransaction::note(Kind kind, const VoFilePath& place, const VoFilePath& aside)
{
    m_notes.changes.pushBack({kind, place, aside});
    if (kind == Kind::Removed)
        m_removalOf.emplace(Key(place), m_notes.changes.size() - 1);
}

// Notes that recovering could not end: of a run that was undone, directories in which somebody else has put something;
// of a run that is recorded, old files that could not be erased.
void UpdateTransaction::readLeft()
{
    if (const auto undone = m_journal.read(Phase::Pending)) {
        for (const VoDirectoryPath& directory : undone->made) {
            if (VoFileSystem::IsDirectory(directory) && m_madeBefore.insert(Key(directory)).second)
                m_notes.made.pushBack(directory);
        }
    }
    const auto recorded = m_journal.read(Phase::Replaced);
    if (!recorded)
        return;
    const auto keep = [this](const VoFilePath& path) {
        if (!path.isNull() && KindOf(path) != FileKind::None)
            m_notes.leftovers.pushBack(path);
    };
    for (const PlaceChange& change : recorded->changes)
        keep(change.aside);
    for (const VoFilePath& path : recorded->leftovers)
        keep(path);
}

void UpdateTransaction::indexDirectories()
{
    std::string_view last; // the folder of the file before, as a rule this one's as well
    for (const TargetFile& target : m_targets) {
        const std::string_view path = target.file ? ListedFile(*target.file).path() : std::string_view();
        const std::string_view folderOfFile = path.substr(0, path.rfind('\\') + 1);
        if (!folderOfFile.empty() && folderOfFile == last)
            continue;
        indexDirectoriesOf(placeOf(target));
        last = folderOfFile;
    }
    if (!m_advert.attributes())
        return;
    for (const VoFilePath& folder : m_advert.attributes()->folders)
        indexDirectoriesOf(AsDirectory(m_directory.appended(folder)).file("any"));
}

void UpdateTransaction::indexDirectoriesOf(const VoFilePath& place)
{
    std::vector<VoDirectoryPath> unknown;
    for (VoDirectoryPath directory = place.parent(); !directory.isNull(); directory = directory.parent()) {
        if (!m_neededKeys.insert(Key(directory)).second)
            break;
        unknown.push_back(directory);
    }
    for (auto directory = unknown.rbegin(); directory != unknown.rend(); ++directory)
        m_needed.pushBack(std::move(*directory));
}

// Files of the old listing but for those that the release has under the same ID at the same place: as a rule nearly
// all.
std::vector<VoFilePath> UpdateTransaction::filesNotAtTargets() const
{
    std::vector<VoFilePath> result;
    const FileTable& records = TableOf(m_installed->files());
    std::vector<bool> stays(records.size());
    for (const TargetFile& target : m_targets) {
        if (!target.file || (!m_going.empty() && isBelowGoing(placeOf(target))))
            continue;
        const ListedFile file(*target.file);
        const FileTable::Number record = records.find(*file.table, file.number);
        if (record != FileTable::None && isAtTarget(records.path(record), target))
            stays[record] = true;
    }
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (!stays[i])
            result.push_back(m_installed->files()[i].path());
    }
    return result;
}

// Only these can be the same files under other names.
PathIndex UpdateTransaction::targetsNamedAs(const std::vector<VoFilePath>& paths) const
{
    PathSet names;
    for (const VoFilePath& path : paths)
        names.insert(FoldedName(VoString(path.filename())).toStdString());
    PathIndex places;
    for (auto target = m_targets.begin(); target != m_targets.end() && !names.empty(); ++target) {
        const VoFilePath place = placeOf(*target);
        if (names.count(FoldedName(VoString(place.filename())).toStdString()) > 0 && !isBelowGoing(place))
            places.add(place, 0);
    }
    return places;
}

// Links of the old release that the new one has not. What they show now is no longer there when they have gone: where
// they stand, directories may have to be made.
void UpdateTransaction::findGoingLinks(const std::vector<LinkPlace>& links, Containment& inside)
{
    std::vector<VoFilePath> old;
    old.reserve(links.size());
    for (const LinkPlace& link : links)
        old.push_back(link.place);
    PathIndex places = targetsNamedAs(old);
    for (const LinkPlace& link : links) {
        if (!places.find(link.place) && inside.holds(link.place) && ReadLink(link.place) && !m_owners.find(link.place))
            m_going.insert(Key(link.place) + '\\');
    }
}

bool UpdateTransaction::isBelowGoing(const VoFilePath& place) const
{
    if (m_going.empty())
        return false;
    for (VoDirectoryPath directory = place.parent(); !directory.isNull(); directory = directory.parent()) {
        if (m_going.count(Key(directory)) > 0)
            return true;
    }
    return false;
}

// What the old listing has and the new release has not, by path: a file whose ID went may still be at the place of one
// whose ID came, and a package installed elsewhere than before leaves all its old places.
void UpdateTransaction::findRemovals()
{
    if (!m_installed)
        return;
    const std::vector<LinkPlace> links = LinkPlacesOf(*m_installed);
    Containment inside(m_installed->installationDirectory());
    findGoingLinks(links, inside);
    const std::vector<VoFilePath> candidates = filesNotAtTargets();
    std::vector<VoFilePath> old = candidates;
    for (const LinkPlace& link : links)
        old.push_back(link.place);
    PathIndex places = targetsNamedAs(old);
    for (const VoFilePath& path : candidates) {
        if (places.find(path))
            continue;
        if (!inside.holds(path)) {
            LogKeptOutside(path.path());
            continue;
        }
        const FileKind kind = KindOf(path);
        if (kind == FileKind::None)
            continue;
        if (kind == FileKind::Directory)
            LogKeptDirectory(path.path());
        else
            remove(path);
    }
    findRemovedLinks(links, places, inside);
}

void UpdateTransaction::findRemovedLinks(const std::vector<LinkPlace>& links, PathIndex& places, Containment& inside)
{
    for (const LinkPlace& link : links) {
        if (!places.find(link.place) && inside.holds(link.place) && IsReplaceable(link))
            remove(link.place);
    }
}

void UpdateTransaction::remove(const VoFilePath& path)
{
    if (const FileOwners::Owned* owned = m_owners.find(path))
        LogKeptFor(owned->packageID, path.path());
    else if (m_removed.insert(Key(path)).second)
        m_removals.pushBack(path);
}

void UpdateTransaction::findReplacements()
{
    Containment inside(m_directory);
    for (const TargetFile& target : m_targets) {
        if (!target.isWritten)
            continue;
        const VoFilePath place = placeOf(target);
        vo::detail::RequireValidLength(BuiltPath(place));
        // The link in the way, which goes, was found inside itself.
        if (!isBelowGoing(place) && !inside.holds(place))
            throw VoValidationException("Invalid target path: " + m_directory.relativeFile(place).path());
        replace(place);
        m_writtenNotes.push_back(static_cast<std::uint32_t>(m_notes.changes.size() - 1));
    }
    for (const VoFilePath& path : m_removals) {
        if (m_moved.count(Key(path)) > 0)
            continue;
        note(Kind::Removed, path, asidePath(path));
    }
}

void UpdateTransaction::replace(const VoFilePath& place)
{
    const FileKind kind = isBelowGoing(place) ? FileKind::None : KindOf(place);
    if (kind == FileKind::Directory) {
        moveDirectoryAside(place);
        return;
    }
    if (kind == FileKind::None)
        note(Kind::Added, place, VoFilePath());
    else
        note(Kind::Replaced, place, asidePath(place));
}

// A directory makes room for a file when all that it holds goes as well. The notes of what is in it come before its
// own: old files are erased in the order of the notes, and a directory only when it is empty.
void UpdateTransaction::moveDirectoryAside(const VoFilePath& place)
{
    const VoDirectoryPath directory = AsDirectory(place);
    VoFileSystem::ForEachFile(directory, true, false, [&](const VoFilePath& path) {
        if (m_removed.count(Key(path)) == 0)
            throw VoFileException("Directory in the way: " + place.path(), place);
    });
    const VoFilePath aside = asidePath(place);
    for (const VoFilePath& path : m_removals) {
        if (!IsBelow(path, directory) || !m_moved.insert(Key(path)).second)
            continue;
        const std::string inner(Bytes(path).substr(Bytes(place).size()));
        m_notes.changes.pushBack({Kind::Inside, path, VoFilePath::CreateUnchecked(aside.path() + VoString(inner))});
    }
    note(Kind::Replaced, place, aside);
}

// Free on disk and among the names that this run gives: what an interrupted run left aside is neither taken for this
// run's nor overwritten.
VoFilePath UpdateTransaction::asidePath(const VoFilePath& place)
{
    VoFilePath path = VoFilePath::CreateUnchecked(place.path() + AsideSuffix);
    for (unsigned n = 1; m_asides.count(Key(path)) > 0 || KindOf(path) != FileKind::None; ++n)
        path = VoFilePath::CreateUnchecked(place.path() + "." + VoString(n) + AsideSuffix);
    m_asides.insert(Key(path));
    return path;
}

void UpdateTransaction::findDirectories()
{
    for (const VoDirectoryPath& directory : m_needed) {
        const VoFilePath obstacle = AsFile(directory);
        const bool isBehindLink = m_removed.count(Key(obstacle)) > 0 || isBelowGoing(obstacle);
        if (!isBehindLink && VoFileSystem::IsDirectory(directory))
            continue;
        if (!isBehindLink && KindOf(obstacle) != FileKind::None)
            throw VoFileException("File in the way: " + obstacle.path(), obstacle);
        m_missing.pushBack(directory);
        m_notes.made.pushBack(directory);
    }
}

// Found before anything changes, because the listing, which does not have them, is noted before.
void UpdateTransaction::findEmptied()
{
    Containment before(m_installed ? m_installed->installationDirectory() : VoDirectoryPath());
    Containment after(m_directory);
    std::vector<VoDirectoryPath> candidates;
    const auto consider = [&](const VoDirectoryPath& directory, Containment& inside) {
        if (m_neededKeys.count(Key(directory)) == 0 && inside.mayRemove(directory))
            candidates.push_back(directory);
    };
    if (m_installed) {
        for (const VoDirectoryPath& directory : m_installed->directories())
            consider(directory, before);
    }
    for (const VoDirectoryPath& directory : m_notes.made)
        consider(directory, after);
    SortInnermostFirst(candidates);
    PathSet emptied;
    for (const VoDirectoryPath& directory : candidates) {
        if (willBeEmpty(directory, emptied) && emptied.insert(Key(directory)).second)
            m_notes.emptied.pushBack(directory);
    }
}

bool UpdateTransaction::willBeEmpty(const VoDirectoryPath& directory, const PathSet& emptied) const
{
    if (!VoFileSystem::IsDirectory(directory))
        return true;
    bool isEmpty = true;
    VoFileSystem::ForEachFile(directory, false, true, [&](const VoFilePath& path) {
        isEmpty = isEmpty && (m_removed.count(Key(path)) > 0 || emptied.count(Key(path)) > 0);
    });
    return isEmpty;
}

void UpdateTransaction::completeNotes()
{
    m_notes.before = m_installed ? m_installed->installationDirectory() : VoDirectoryPath();
    m_notes.result = InstalledPackageListing(m_advert, m_directory);
    m_notes.result.setAttributes(m_advert.attributes());
    for (const TargetFile& target : m_targets) {
        if (target.file)
            m_notes.result.addInstalled(*target.file, placeOf(target));
    }
    PathSet known;
    for (const VoDirectoryPath& directory : m_notes.emptied)
        known.insert(Key(directory));
    const auto add = [&](const VoDirectoryPath& directory) {
        if (known.insert(Key(directory)).second)
            m_notes.result.add(directory);
    };
    if (m_installed) {
        for (const VoDirectoryPath& directory : m_installed->directories())
            add(directory);
    }
    for (const VoDirectoryPath& directory : m_notes.made)
        add(directory);
}

void UpdateTransaction::syncDirectories() const
{
    PathSet done;
    for (const PlaceChange& change : m_notes.changes) {
        const VoDirectoryPath directory = change.place.parent();
        if (done.insert(Key(directory)).second && VoFileSystem::IsDirectory(directory))
            VoFileSystem::SyncDirectory(directory);
    }
}

} // namespace vo::updater::detail
