#include <Updater/UpdateTransaction.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/NativePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Subsystem/VoLogging.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/Containment.h>
#include <Updater/FileActions.h>
#include <Updater/FileInstaller.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vo::updater::detail {

namespace {

vo::logging::Logger& Log()
{
    return vo::logging::Logger::Get("updater");
}

std::string Key(const VoFilePath& path)
{
    return std::string(Bytes(path));
}

std::string Key(const VoAbstractPath& path)
{
    return std::string(Bytes(path));
}

// The name of a directory as that of a file that stands in its place.
VoFilePath AsFile(const VoDirectoryPath& directory)
{
    const std::string text(Bytes(directory).substr(0, Bytes(directory).size() - 1));
    return VoFilePath::CreateUnchecked(VoString(text.c_str()));
}

VoDirectoryPath AsDirectory(const VoFilePath& file)
{
    return VoDirectoryPath(file.path() + "\\");
}

/// The places of all files of a release, found under each of their names.
class Places
{
public:
    explicit Places(const VoDeque<TargetFile>& targets)
    {
        for (const TargetFile& target : targets) {
            m_paths.insert(Key(target.place));
            m_byName.emplace(target.place, target.place);
            m_real.insert(realPath(target.place));
        }
    }

    bool hold(const VoFilePath& path)
    {
        if (m_paths.count(Key(path)) > 0 || m_real.count(realPath(path)) > 0)
            return true;
        const auto sameName = m_byName.find(path);
        return sameName != m_byName.end() && VoFileSystem::Same(path, sameName->second);
    }

private:
    std::string realPath(const VoFilePath& path)
    {
        const VoDirectoryPath directory = path.parent();
        const auto [real, isNew] = m_realDirectories.try_emplace(Key(directory));
        if (isNew)
            real->second = RealDirectory(directory);
        return real->second + '\\' + std::string(Bytes(path).substr(Bytes(directory).size()));
    }

    std::unordered_set<std::string> m_paths;
    std::unordered_map<VoFilePath, VoFilePath> m_byName; // in any letter case
    std::unordered_set<std::string> m_real;              // with links followed
    std::unordered_map<std::string, std::string> m_realDirectories;
};

} // namespace

UpdateTransaction::UpdateTransaction(const AdvertisedPackageListing& advert, const InstalledPackageListing* installed,
                                     const VoDirectoryPath& directory, VoDeque<TargetFile> targets,
                                     const InstallationJournal& journal)
    : m_advert(advert)
    , m_installed(installed)
    , m_directory(directory)
    , m_targets(std::move(targets))
    , m_journal(journal)
{
}

UpdateTransaction::~UpdateTransaction() = default;

void UpdateTransaction::begin()
{
    m_interrupted = m_journal.read();
    indexDirectories();
    findRemovals();
    if (m_interrupted)
        eraseOrphans();
    requireUsable();
    findDirectories();
    const bool isWriting =
        std::any_of(m_targets.begin(), m_targets.end(), [](const TargetFile& target) { return target.isWritten; });
    if (!isWriting && m_removals.isEmpty() && m_missing.isEmpty() && !m_interrupted)
        return;
    m_hasNoted = true;
    writeJournal();
    clearTheWay();
    for (const VoDirectoryPath& directory : m_missing)
        MakeDirectory(directory);
}

void UpdateTransaction::commit(const std::function<void(const TargetFile&)>& onPlaced)
{
    for (const TargetFile& target : m_targets) {
        if (!target.isWritten)
            continue;
        PutInPlace(BuiltPath(target.place), target.place);
        m_hasPlaced = true;
        onPlaced(target);
    }
    for (const VoFilePath& path : m_removals) {
        if (!EraseFile(path))
            Log().warning("Directory kept in place of removed file: " + path.path());
    }
    pruneDirectories();
    syncDirectories();
}

// The notes are kept when an old file may have a new content, by this run or by an interrupted one before it: they tell
// which ones must not be trusted.
void UpdateTransaction::rollBack() noexcept
{
    if (!m_hasNoted)
        return;
    try {
        const VoUniquePtr<InstalledPackageListing> notes = m_journal.read();
        const bool isUndone = !notes || RollBack(*notes, m_installed);
        if (isUndone && !m_hasPlaced && !m_interrupted)
            m_journal.remove();
    } catch (...) {
        Log().error("Cannot undo the installation: " + CurrentExceptionText());
    }
}

VoUniquePtr<InstalledPackageListing> UpdateTransaction::listing() const
{
    auto result = VoUniquePtr<InstalledPackageListing>::Make(m_advert, m_directory);
    for (const TargetFile& target : m_targets)
        result->add(target.place, target.file->id(), target.file->checksum(), target.file->size());
    if (m_installed) {
        for (const VoDirectoryPath& directory : m_installed->directories()) {
            if (m_pruned.count(Key(directory)) == 0)
                result->add(directory);
        }
    }
    for (const VoDirectoryPath& directory : m_created) {
        if (m_pruned.count(Key(directory)) == 0)
            result->add(directory);
    }
    return result;
}

void UpdateTransaction::indexDirectories()
{
    for (const TargetFile& target : m_targets)
        indexDirectoriesOf(target.place);
}

void UpdateTransaction::indexDirectoriesOf(const VoFilePath& place)
{
    std::vector<VoDirectoryPath> unknown;
    for (VoDirectoryPath directory = place.parent(); !directory.isNull(); directory = directory.parent()) {
        if (!m_needed.insert(Key(directory)).second)
            break;
        unknown.push_back(directory);
    }
    for (auto directory = unknown.rbegin(); directory != unknown.rend(); ++directory)
        m_neededDirectories.pushBack(std::move(*directory));
}

// What the old listing has and the new release has not, by path: a file whose ID went may still be at the place of one
// whose ID came, and a package installed elsewhere than before leaves all its old places.
void UpdateTransaction::findRemovals()
{
    if (!m_installed)
        return;
    Places places(m_targets);
    Containment inside(m_installed->installationDirectory());
    for (const InstalledFileListing& file : m_installed->files()) {
        const VoFilePath& path = file.path();
        if (places.hold(path))
            continue;
        if (!inside.holds(path))
            Log().warning("File outside the installation directory kept: " + path.path());
        else if (m_removed.insert(Key(path)).second)
            m_removals.pushBack(path);
    }
}

void UpdateTransaction::eraseOrphans() const
{
    std::unordered_map<std::string, const VoChecksum*> kept;
    for (const TargetFile& target : m_targets)
        kept[Key(target.place)] = &target.file->checksum();
    PathSet recorded;
    if (m_installed) {
        for (const InstalledFileListing& file : m_installed->files())
            recorded.insert(Key(file.path()));
    }
    EraseLeftFiles(*m_interrupted, [&](const InstalledFileListing& left) {
        const auto target = kept.find(Key(left.path()));
        return recorded.count(Key(left.path())) > 0 || (target != kept.end() && *target->second == left.checksum());
    });
}

void UpdateTransaction::requireUsable()
{
    Containment inside(m_directory);
    for (const TargetFile& target : m_targets) {
        if (!target.isWritten)
            continue;
        vo::detail::RequireValidLength(BuiltPath(target.place));
        if (!inside.holds(target.place))
            throw VoValidationException("Invalid target path: " + target.file->target().path());
        switch (KindOf(target.place)) {
        case FileKind::None:
            m_absent.insert(Key(target.place));
            break;
        case FileKind::Directory:
            requireClearable(target.place);
            m_directoryPlaces.pushBack(target.place);
            break;
        default:
            break;
        }
    }
}

void UpdateTransaction::requireClearable(const VoFilePath& place) const
{
    VoFileSystem::ForEachFile(AsDirectory(place), true, false, [&](const VoFilePath& path) {
        if (m_removed.count(Key(path)) == 0)
            throw VoFileException("Directory in the way: " + place.path(), place.path());
    });
}

void UpdateTransaction::findDirectories()
{
    PathSet recorded;
    PathSet noted;
    if (m_installed) {
        for (const VoDirectoryPath& directory : m_installed->directories())
            recorded.insert(Key(directory));
    }
    if (m_interrupted) {
        for (const VoDirectoryPath& directory : m_interrupted->directories())
            noted.insert(Key(directory));
    }
    for (const VoDirectoryPath& directory : m_neededDirectories) {
        const bool isMissing = !VoFileSystem::IsDirectory(directory);
        if (isMissing) {
            const VoFilePath obstacle = AsFile(directory);
            if (KindOf(obstacle) != FileKind::None && m_removed.count(Key(obstacle)) == 0)
                throw VoFileException("File in the way: " + obstacle.path(), obstacle.path());
            m_missing.pushBack(directory);
        }
        if ((isMissing || noted.count(Key(directory)) > 0) && recorded.count(Key(directory)) == 0)
            m_created.pushBack(directory);
    }
    if (!m_interrupted)
        return;
    for (const VoDirectoryPath& directory : m_interrupted->directories()) {
        if (m_needed.count(Key(directory)) == 0 && recorded.count(Key(directory)) == 0 &&
            VoFileSystem::IsDirectory(directory))
            m_created.pushBack(directory);
    }
}

void UpdateTransaction::writeJournal() const
{
    PathSet ownBefore;
    if (m_interrupted) {
        for (const InstalledFileListing& file : m_interrupted->files())
            ownBefore.insert(Key(file.path()));
    }
    InstalledPackageListing notes(m_advert, m_directory);
    PathSet written;
    for (const TargetFile& target : m_targets) {
        if (!target.isWritten)
            continue;
        const std::string key = Key(target.place);
        written.insert(key);
        const bool isOwn = m_absent.count(key) > 0 || ownBefore.count(key) > 0;
        notes.add(isOwn ? target.place : BuiltPath(target.place), target.file->id(), target.file->checksum(),
                  target.file->size());
    }
    if (m_interrupted) {
        for (const std::string& place : NotedPlaces(*m_interrupted)) {
            if (written.count(place) == 0)
                notes.add(BuiltPath(VoFilePath::CreateUnchecked(VoString(place.c_str()))), VoUUID(""), VoChecksum(), 0);
        }
    }
    for (const VoDirectoryPath& directory : m_created)
        notes.add(directory);
    m_journal.write(notes);
}

// An old file where a directory is needed, or below a directory where a file is needed, goes before the new files are
// built; these cannot be built otherwise.
void UpdateTransaction::clearTheWay() const
{
    for (const VoDirectoryPath& directory : m_missing) {
        if (m_removed.count(Key(AsFile(directory))) > 0)
            EraseFile(AsFile(directory));
    }
    for (const VoFilePath& place : m_directoryPlaces) {
        VoDeque<VoDirectoryPath> directories{AsDirectory(place)};
        VoFileSystem::ForEachFile(directories.front(), true, false, [](const VoFilePath& path) { EraseFile(path); });
        VoFileSystem::ForEachDirectory(directories.front(), true,
                                       [&](const VoDirectoryPath& directory) { directories.pushBack(directory); });
        for (; !directories.isEmpty(); directories.popBack())
            EraseDirectoryIfEmpty(directories.back());
    }
}

void UpdateTransaction::pruneDirectories()
{
    struct Candidate
    {
        VoDirectoryPath directory;
        Containment* inside;
    };
    Containment old(m_installed ? m_installed->installationDirectory() : VoDirectoryPath());
    Containment interrupted(m_interrupted ? m_interrupted->installationDirectory() : VoDirectoryPath());
    std::vector<Candidate> candidates;
    if (m_installed) {
        for (const VoDirectoryPath& directory : m_installed->directories())
            candidates.push_back({directory, &old});
    }
    for (const VoDirectoryPath& directory : m_created)
        candidates.push_back({directory, &interrupted});
    // Longer paths first: a directory comes before the one that holds it.
    std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return Bytes(a.directory).size() > Bytes(b.directory).size();
    });
    for (const Candidate& candidate : candidates) {
        if (m_needed.count(Key(candidate.directory)) == 0 && candidate.inside->mayRemove(candidate.directory) &&
            EraseDirectoryIfEmpty(candidate.directory))
            m_pruned.insert(Key(candidate.directory));
    }
}

void UpdateTransaction::syncDirectories() const
{
    PathSet done;
    const auto sync = [&done](const VoFilePath& path) {
        const VoDirectoryPath directory = path.parent();
        if (done.insert(Key(directory)).second && VoFileSystem::IsDirectory(directory))
            VoFileSystem::SyncDirectory(directory);
    };
    for (const TargetFile& target : m_targets) {
        if (target.isWritten)
            sync(target.place);
    }
    for (const VoFilePath& path : m_removals)
        sync(path);
}

} // namespace vo::updater::detail
