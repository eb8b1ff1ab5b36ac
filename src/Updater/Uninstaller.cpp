#include <Updater/Uninstaller.h>

#include <Core/VoFileException.h>
#include <FileSystem/VoFileSystem.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>
#include <Updater/Containment.h>
#include <Updater/FileActions.h>
#include <Updater/InstallationJournal.h>
#include <Updater/InstallerPrivate.h>

#include <algorithm>
#include <vector>

namespace vo::updater::detail {

namespace {

vo::logging::Logger& Log()
{
    return vo::logging::Logger::Get("updater");
}

} // namespace

Uninstaller::Uninstaller(const VoUUID& packageID, const VoFilePath& listingPath, const InstalledPackageListing& listing,
                         const InstalledPackageListing* notes, const Broadcast& broadcast)
    : m_packageID(packageID)
    , m_path(listingPath)
    , m_listing(listing)
    , m_notes(notes)
    , m_broadcast(broadcast)
{
}

void Uninstaller::run(const VoStopFlag& stop)
{
    if (m_notes)
        EraseLeftFiles(*m_notes, [](const InstalledFileListing&) { return false; });
    removeFiles(stop);
    removeDirectories();
    if (!m_failure) {
        EraseFile(m_path);
        return;
    }
    keepRemaining();
    try {
        std::rethrow_exception(m_failure);
    } catch (const VoFileException& failure) {
        m_broadcast(Message<UninstallFailedMessage>(failure.message(), m_packageID));
        throw;
    }
}

void Uninstaller::removeFiles(const VoStopFlag& stop)
{
    Containment inside(m_listing.installationDirectory());
    std::uint64_t done = 0;
    for (const InstalledFileListing& file : m_listing.files()) {
        stop.throwIfStopped();
        try {
            if (!inside.holds(file.path()))
                Log().warning("File outside the installation directory kept: " + file.path().path());
            else if (EraseFile(file.path()))
                Log().diagnostic("File removed: " + file.path().path() + " for package " + m_packageID.toString());
            else
                Log().warning("Directory kept in place of removed file: " + file.path().path());
        } catch (const VoFileException& failure) {
            Log().error("File cannot be removed: " + file.path().path() + ": " + failure.message());
            m_remaining.pushBack(file);
            if (!m_failure)
                m_failure = std::current_exception();
        }
        m_broadcast(Message<UninstallProgressMessage>(++done, m_listing.files().size(), m_packageID));
    }
}

// Innermost first, and only what is empty: what else lies there is not ours.
void Uninstaller::removeDirectories()
{
    Containment inside(m_listing.installationDirectory());
    Containment insideNoted(m_notes ? m_notes->installationDirectory() : VoDirectoryPath());
    std::vector<VoDirectoryPath> directories;
    for (const VoDirectoryPath& directory : m_listing.directories()) {
        if (inside.mayRemove(directory))
            directories.push_back(directory);
        else
            Log().warning("Directory outside the installation directory kept: " + directory.path());
    }
    if (m_notes) {
        for (const VoDirectoryPath& directory : m_notes->directories()) {
            if (insideNoted.mayRemove(directory))
                directories.push_back(directory);
        }
    }
    std::stable_sort(directories.begin(), directories.end(), [](const VoDirectoryPath& a, const VoDirectoryPath& b) {
        return Bytes(a).size() > Bytes(b).size();
    });
    for (const VoDirectoryPath& directory : directories) {
        try {
            if (!EraseDirectoryIfEmpty(directory))
                Log().diagnostic("Directory not empty: " + directory.path());
        } catch (const VoFileException& failure) {
            Log().warning("Directory cannot be removed: " + directory.path() + ": " + failure.message());
        }
    }
}

void Uninstaller::keepRemaining() const
{
    InstalledPackageListing remaining(m_listing, m_listing.installationDirectory());
    for (const InstalledFileListing& file : m_remaining)
        remaining.add(file);
    for (const VoDirectoryPath& directory : m_listing.directories()) {
        if (VoFileSystem::IsDirectory(directory))
            remaining.add(directory);
    }
    AtStep(FileStep::WriteDocument, m_path.path());
    remaining.write(m_path);
}

} // namespace vo::updater::detail
