#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/registry/InstallationJournal.h>

#include <exception>
#include <functional>

namespace vo::updater {
class AbstractMessage;
}

namespace vo::updater::detail {

/// Removes the files and directories of one installed package, and what interrupted installations of it left. May be
/// repeated after it was interrupted at any point.
class Uninstaller
{
public:
    using Broadcast = std::function<void(const VoSharedPtr<AbstractMessage>&)>;

    /// `listing` is null for a package that is not installed. What was interrupted has been recovered before, so that
    /// the journal holds no more than recovering could not end. The arguments must outlive the uninstaller.
    Uninstaller(const VoUUID& packageID, const VoFilePath& listingPath, const InstalledPackageListing* listing,
                const InstallationJournal& journal, const Broadcast& broadcast);

    /// Goes on after a failure. What cannot be removed stays in the listing, and the first failure is thrown when the
    /// rest is done.
    void run(const VoStopFlag& stop);

private:
    void removeFiles(const VoStopFlag& stop);
    void removeLinks(const VoStopFlag& stop);
    void removeLeft();
    void removeDirectories();
    template <typename Work>
    bool attempt(const char* failure, const VoString& path, Work work);
    void keepRemaining() const;

    const VoUUID& m_packageID;
    const VoFilePath& m_path;
    const InstalledPackageListing* const m_listing;
    const InstallationJournal& m_journal;
    const Broadcast& m_broadcast;
    VoDeque<InstalledFileListing> m_remaining;
    bool m_hasLinksLeft = false;
    std::exception_ptr m_failure;
};

} // namespace vo::updater::detail
