#include <Updater/detail/operations/Uninstaller.h>

#include <Core/VoFileException.h>
#include <Core/VoSharedPtr.h>
#include <FileSystem/VoFileSystem.h>
#include <Threading/VoStopFlag.h>
#include <Updater/UpdateMessages.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/HeldTree.h>
#include <Updater/detail/files/KeptFile.h>
#include <Updater/detail/files/LinkPlaces.h>
#include <Updater/detail/registry/FileOwners.h>
#include <Updater/detail/registry/PackageRecords.h>

#include <algorithm>
#include <vector>

namespace vo::updater::detail {

Uninstaller::Uninstaller(const VoUUID& packageID, const VoFilePath& listingPath, const InstalledPackageListing* listing,
                         const InstallationJournal& journal, const Broadcast& broadcast)
    : m_packageID(packageID)
    , m_path(listingPath)
    , m_listing(listing)
    , m_journal(journal)
    , m_broadcast(broadcast)
{
}

void Uninstaller::run(const VoStopFlag& stop)
{
    const HeldTree held(m_listing ? m_listing->installationDirectory() : VoDirectoryPath());
    if (m_listing) {
        removeLinks(stop);
        removeFiles(stop);
    }
    removeLeft();
    removeDirectories();
    if (!m_failure)
        return;
    if (m_listing)
        keepRemaining();
    std::rethrow_exception(m_failure);
}

// False when the work failed; the first failure is kept.
template <typename Work>
bool Uninstaller::attempt(const char* failure, const VoString& path, Work work)
{
    try {
        work();
        return true;
    } catch (const VoFileException& exception) {
        Log().error(failure + path + ": " + exception.message());
        if (!m_failure)
            m_failure = std::current_exception();
        return false;
    }
}

void Uninstaller::removeFiles(const VoStopFlag& stop)
{
    Containment inside(m_listing->installationDirectory());
    FileOwners owners = FileOwners::Others(m_packageID, {m_listing->installationDirectory()});
    std::uint64_t done = 0;
    for (const InstalledFileListing& file : m_listing->files()) {
        stop.throwIfStopped();
        const VoString& path = file.path().path();
        const bool isDone = attempt("File cannot be removed: ", path, [&] {
            if (!inside.holds(file.path()))
                LogKeptOutside(path);
            else if (const FileOwners::Owned* owned = owners.find(file.path()))
                LogKeptFor(owned->packageID, path);
            else if (EraseFile(file.path()))
                Log().diagnostic("File removed: " + path + " for package " + m_packageID.toString());
            else
                LogKeptDirectory(path);
        });
        if (!isDone)
            m_remaining.pushBack(file);
        m_broadcast(VoSharedPtr<UninstallProgressMessage>::Make(++done, m_listing->files().size(), m_packageID));
    }
}

void Uninstaller::removeLinks(const VoStopFlag& stop)
{
    Containment inside(m_listing->installationDirectory());
    FileOwners owners = FileOwners::Others(m_packageID, {m_listing->installationDirectory()});
    for (const LinkPlace& link : LinkPlacesOf(*m_listing)) {
        stop.throwIfStopped();
        const VoString& path = link.place.path();
        m_hasLinksLeft |= !attempt("Link cannot be removed: ", path, [&] {
            if (!inside.holds(link.place))
                LogKeptOutside(path);
            else if (const FileOwners::Owned* owned = owners.find(link.place))
                LogKeptFor(owned->packageID, path);
            else if (IsReplaceable(link))
                EraseFile(link.place);
            else if (KindOf(link.place) != FileKind::None)
                Log().warning("File kept in place of removed link: " + path);
        });
    }
}

// Old files that could not be erased when they were replaced.
void Uninstaller::removeLeft()
{
    const auto notes = m_journal.read(InstallationJournal::Phase::Replaced);
    if (!notes)
        return;
    attempt("Old files cannot be removed: ", m_path.path(), [&] {
        if (!EraseOld(*notes))
            throw VoFileException("Old files cannot be removed: " + notes->result.installationDirectory().path(),
                                  notes->result.installationDirectory().path());
    });
}

// Innermost first, and only what is empty: what else lies there is not ours.
void Uninstaller::removeDirectories()
{
    std::vector<VoDirectoryPath> directories;
    const auto add = [&directories](const InstalledPackageListing& listing, const VoDeque<VoDirectoryPath>& recorded) {
        Containment inside(listing.installationDirectory());
        for (const VoDirectoryPath& directory : recorded) {
            if (inside.mayRemove(directory))
                directories.push_back(directory);
            else
                Log().warning("Directory outside the installation directory kept: " + directory.path());
        }
    };
    attempt("Directories cannot be removed: ", m_path.path(), [&] {
        if (m_listing)
            add(*m_listing, m_listing->directories());
        if (const auto notes = m_journal.read(InstallationJournal::Phase::Pending))
            add(notes->result, notes->made);
    });
    SortInnermostFirst(directories);
    for (const VoDirectoryPath& directory : directories) {
        attempt("Directory cannot be removed: ", directory.path(), [&] {
            if (!EraseDirectoryIfEmpty(directory))
                Log().diagnostic("Directory not empty: " + directory.path());
        });
    }
}

void Uninstaller::keepRemaining() const
{
    InstalledPackageListing remaining(*m_listing, m_listing->installationDirectory());
    for (const InstalledFileListing& file : m_remaining)
        remaining.add(file);
    for (const VoDirectoryPath& directory : m_listing->directories()) {
        if (KindOf(AsFile(directory)) == FileKind::Directory)
            remaining.add(directory);
    }
    if (m_hasLinksLeft)
        remaining.setAttributes(m_listing->attributes());
    WriteInstalled(remaining, m_path);
}

} // namespace vo::updater::detail
