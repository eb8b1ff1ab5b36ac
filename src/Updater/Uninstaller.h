#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/InstalledPackageListing.h>

#include <exception>
#include <functional>

namespace vo::updater {
class AbstractMessage;
}

namespace vo::updater::detail {

/// Removes the files and directories of one installed package, and at last its listing. May be repeated after it was
/// interrupted at any point.
class Uninstaller
{
public:
    using Broadcast = std::function<void(const VoSharedPtr<AbstractMessage>&)>;

    /// `notes` is what an interrupted installation of the package noted, or null. The arguments must outlive the
    /// uninstaller.
    Uninstaller(const VoUUID& packageID, const VoFilePath& listingPath, const InstalledPackageListing& listing,
                const InstalledPackageListing* notes, const Broadcast& broadcast);

    /// Files that cannot be removed stay in the listing, which then is kept; the first such failure is thrown when the
    /// rest is done.
    void run(const VoStopFlag& stop);

private:
    void removeFiles(const VoStopFlag& stop);
    void removeDirectories();
    void keepRemaining() const;

    const VoUUID& m_packageID;
    const VoFilePath& m_path;
    const InstalledPackageListing& m_listing;
    const InstalledPackageListing* const m_notes;
    const Broadcast& m_broadcast;
    VoDeque<InstalledFileListing> m_remaining;
    std::exception_ptr m_failure;
};

} // namespace vo::updater::detail
