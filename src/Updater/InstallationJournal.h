#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoFilePath.h>

#include <functional>
#include <string>
#include <unordered_set>

namespace vo::updater {
class InstalledFileListing;
class InstalledPackageListing;
} // namespace vo::updater

namespace vo::updater::detail {

/// Notes on disk what an installation is about to create, before it creates the first of it, and forgets it when the
/// listing that records the installation is written. Whatever a killed process left behind is found through it.
///
///     <update directory>\installed\<packageID>.pending
///
/// The document is an installed package listing, read as follows: its directories are those that the run creates; a
/// file that stands with its own path does not exist yet and is the run's when it has the noted size and checksum; for
/// a file that exists already only the path of the built file beside it is noted.
class VOCORE_PRIVATE_EXPORT InstallationJournal
{
public:
    /// The journal of the package whose listing has that path.
    static InstallationJournal OfListing(const VoFilePath& listing);
    /// A journal that keeps nothing.
    InstallationJournal();

    bool exists() const; ///< Whether there are notes.
    /// What an interrupted run noted; empty when there was none. A journal that cannot be read is logged and counts as
    /// none.
    VoUniquePtr<InstalledPackageListing> read() const;
    /// Notes what a run is going to create, in place of older notes.
    void write(const InstalledPackageListing& notes) const;
    /// Forgets; nothing when there are no notes.
    void remove() const;

private:
    explicit InstallationJournal(const VoFilePath& path);

    VoFilePath m_path; // null: keeps nothing
};

/// Removes the files that an interrupted run left: what it was building, and what it had put in place, save where
/// `isKept` says that the file belongs to a release. Only what lies inside the installation directory of the notes.
VOCORE_PRIVATE_EXPORT void EraseLeftFiles(const InstalledPackageListing& notes,
                                          const std::function<bool(const InstalledFileListing&)>& isKept);

/// Takes back what an interrupted run created, files and directories. The result is false while a directory that it
/// created holds something else: then the notes had better be kept, so that a later operation still knows where it
/// comes from. What belongs to `installed` (null: nothing is installed) stays.
VOCORE_PRIVATE_EXPORT bool RollBack(const InstalledPackageListing& notes, const InstalledPackageListing* installed);

/// The places of all files that the noted run was going to write, as bytes: their contents are not to be trusted.
std::unordered_set<std::string> NotedPlaces(const InstalledPackageListing& notes);

} // namespace vo::updater::detail
