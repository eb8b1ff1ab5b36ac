#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/registry/InstallationJournal.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vo::updater {
class AdvertisedFileListing;
class AdvertisedPackageListing;
} // namespace vo::updater

namespace vo::updater::detail {

class Containment;
class FileOwners;
class PathIndex;
struct LinkPlace;

/// A file of the release, or a link, and its place on disk.
struct TargetFile
{
    const AdvertisedFileListing* file; ///< Null for a link, and for the copy that stands for one.
    VoFilePath place;                  ///< Of a link or its copy; null for a file, whose target tells.
    bool isWritten;                    ///< Whether this run builds it; else it is in place already.
};

/// Changes a tree of installed files from one release to the next, as one step:
///
///     begin()     refuses what cannot be done, notes what will be done, moves aside the files that stand where
///                 directories must be, makes the directories
///                 (then the caller builds every written file beside its place)
///     place()     moves the old files aside and the built ones into place
///                 (then the caller looks at the result)
///     commit()    records the result, then erases the old files and the directories left empty
///
/// After a failure of any of them, or between them, rollBack() leaves the tree and the records as they were. What a
/// killed process left, the next operation ends by the journal (Recover): it is all old or all new.
///
/// At every moment each old file is at its place or aside, until the journal says that the new ones are in place; from
/// then on each new file is at its place. No name is ever overwritten by another content than the one it had before.
class VOCORE_PRIVATE_EXPORT UpdateTransaction
{
public:
    /// Keeps a listing, and tells whether all of the keeping succeeded.
    using Recorder = std::function<bool(const InstalledPackageListing&)>;

    /// `targets` are all files of the release, in the advert's order, then its links. `installed` is null when nothing
    /// is installed. What other packages own is neither moved nor erased. What was interrupted has been recovered
    /// before. The arguments that are taken by reference must outlive the transaction.
    UpdateTransaction(const AdvertisedPackageListing& advert, const InstalledPackageListing* installed,
                      const VoDirectoryPath& directory, VoDeque<TargetFile> targets, FileOwners& owners,
                      const InstallationJournal& journal);
    ~UpdateTransaction();

    /// @throws VoValidationException ("Invalid target path: " + target) for a place that a link leads out of the
    /// installation directory
    /// @throws VoPathSizeFileException
    /// @throws VoFileException for something else in the way
    void begin();
    /// Calls `onPlaced` for each file that was put in place.
    /// @throws VoFileException naming the file that cannot be replaced
    void place(const std::function<void(const TargetFile&, const VoFilePath& place)>& onPlaced);
    /// An empty recorder keeps nothing. Throws what the recorder throws. Trouble with old files is logged: a later
    /// operation erases them.
    void commit(const Recorder& record);
    /// Undoes everything; its own failures are logged, and the next operation goes on with it.
    void rollBack() noexcept;

    /// The files in the advert's order; the directories of the old release first, then those created now. As the last
    /// step, after commit().
    InstalledPackageListing takeListing();

private:
    using PathSet = std::unordered_set<std::string>;

    VoFilePath placeOf(const TargetFile& target) const;
    bool isAtTarget(std::string_view path, const TargetFile& target) const;
    void note(PlaceChange::Kind kind, const VoFilePath& place, const VoFilePath& aside);
    void readLeft();
    void indexDirectories();
    void indexDirectoriesOf(const VoFilePath& place);
    void findGoingLinks(const std::vector<LinkPlace>& links, Containment& inside);
    bool isBelowGoing(const VoFilePath& place) const;
    std::vector<VoFilePath> filesNotAtTargets() const;
    PathIndex targetsNamedAs(const std::vector<VoFilePath>& paths) const;
    void findRemovals();
    void findRemovedLinks(const std::vector<LinkPlace>& links, PathIndex& places, Containment& inside);
    void remove(const VoFilePath& path);
    void findReplacements();
    void replace(const VoFilePath& place);
    void moveDirectoryAside(const VoFilePath& place);
    void findDirectories();
    void findEmptied();
    bool willBeEmpty(const VoDirectoryPath& directory, const PathSet& emptied) const;
    void completeNotes();
    VoFilePath asidePath(const VoFilePath& place);
    void syncDirectories() const;

    const AdvertisedPackageListing& m_advert;
    const InstalledPackageListing* const m_installed;
    const VoDirectoryPath m_directory;
    const VoDeque<TargetFile> m_targets;
    FileOwners& m_owners;
    const InstallationJournal& m_journal;

    VoDeque<VoDirectoryPath> m_needed; // of all targets, outermost first
    PathSet m_neededKeys;

    PathSet m_going; // places of old links that make room, by their bytes, each with a separator behind

    VoDeque<VoFilePath> m_removals; // old files on disk that the release does not have
    PathSet m_removed;              // those, by their bytes
    PathSet m_moved;                // those of them that go with a directory

    PathSet m_asides;                                         // names that are given to old files
    std::unordered_map<std::string, std::size_t> m_removalOf; // notes of what is Removed, by place
    std::vector<std::uint32_t> m_writtenNotes;                // those of the written targets, in their order
    VoDeque<VoDirectoryPath> m_missing;                       // directories to make, outermost first
    PathSet m_madeBefore;                                     // by an interrupted run, and not empty

    RunNotes m_notes;
    bool m_hasNoted = false;  // the journal may have the notes
    bool m_isDecided = false; // the journal says that the new files stay
};

} // namespace vo::updater::detail
