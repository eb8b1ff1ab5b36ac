#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/InstallationJournal.h>
#include <Updater/InstalledPackageListing.h>

#include <functional>
#include <string>
#include <unordered_set>

namespace vo::updater {
class AdvertisedFileListing;
class AdvertisedPackageListing;
} // namespace vo::updater

namespace vo::updater::detail {

/// A file of the release and its place on disk.
struct TargetFile
{
    const AdvertisedFileListing* file;
    VoFilePath place;
    bool isWritten; ///< Whether this run builds it; else it is in place already.
};

/// Changes a tree of installed files from one release to the next, as one step as far as a file system allows:
///
///     begin()     refuses what cannot be done, notes what will be created, makes the directories
///                 (then the caller builds every written file beside its place)
///     commit()    renames the built files into place, removes the old ones and the directories left empty
///     listing()   the record of the result
///
/// After a failure up to commit(), rollBack() leaves the tree as it was, but for old files that stood in the way of a
/// new directory. A failure inside commit() can leave some files new and some old; rollBack() then takes away those
/// that the old release does not have, and running again completes the change. What a killed process left is found by
/// the next run through the journal.
class VOCORE_PRIVATE_EXPORT UpdateTransaction
{
public:
    /// `targets` are all files of the release, in the advert's order. `installed` is null when nothing is installed.
    /// The arguments that are taken by reference must outlive the transaction.
    UpdateTransaction(const AdvertisedPackageListing& advert, const InstalledPackageListing* installed,
                      const VoDirectoryPath& directory, VoDeque<TargetFile> targets,
                      const InstallationJournal& journal);
    ~UpdateTransaction();

    /// Throws VoValidationException ("Invalid target path: " + target) for a place that a link leads out of the
    /// installation directory, VoPathSizeFileException, and VoFileException for something else in the way.
    void begin();
    /// Calls `onPlaced` for each file that was put in place.
    void commit(const std::function<void(const TargetFile&)>& onPlaced);
    /// Undoes what can be undone; its own failures are logged.
    void rollBack() noexcept;

    /// The files in the advert's order; the directories of the old release first, then those created now.
    VoUniquePtr<InstalledPackageListing> listing() const;

private:
    using PathSet = std::unordered_set<std::string>;

    void indexDirectories();
    void indexDirectoriesOf(const VoFilePath& place);
    void findRemovals();
    void eraseOrphans() const;
    void requireUsable();
    void requireClearable(const VoFilePath& place) const;
    void findDirectories();
    void writeJournal() const;
    void clearTheWay() const;
    void pruneDirectories();
    void syncDirectories() const;

    const AdvertisedPackageListing& m_advert;
    const InstalledPackageListing* const m_installed;
    const VoDirectoryPath m_directory;
    const VoDeque<TargetFile> m_targets;
    const InstallationJournal& m_journal;

    VoUniquePtr<InstalledPackageListing> m_interrupted; // what an earlier run noted, or null

    VoDeque<VoDirectoryPath> m_neededDirectories; // of all targets, outermost first
    PathSet m_needed;

    VoDeque<VoFilePath> m_removals; // old files that the release does not have
    PathSet m_removed;

    PathSet m_absent;                      // places of written files that nothing bears
    VoDeque<VoFilePath> m_directoryPlaces; // places of written files where a directory stands
    VoDeque<VoDirectoryPath> m_missing;    // directories to make, outermost first
    VoDeque<VoDirectoryPath> m_created;    // directories to record as made by this run or an interrupted one
    PathSet m_pruned;                      // recorded directories that are gone
    bool m_hasNoted = false;               // the journal has what this run creates
    bool m_hasPlaced = false;              // old files have new contents; the notes tell which may
};

} // namespace vo::updater::detail
