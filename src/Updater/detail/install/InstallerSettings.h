#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Updater/detail/install/ChunkCache.h>

#include <cstddef>
#include <functional>

namespace vo::updater {
class InstalledPackageListing;
}

namespace vo::updater::detail {

/// How a run differs from the usual one.
struct InstallerSettings
{
    VoDirectoryPath staging;  ///< The staging directory; null: the package's own.
    bool isTemporary = false; ///< Whether the installation itself is: then nothing is noted, and no package is asked.
    /// Keeps the listing as the last step that can still be undone, and tells whether all of the keeping succeeded;
    /// what it throws undoes the run. Empty: the caller keeps what the run returns.
    std::function<bool(const InstalledPackageListing&)> record;
    std::size_t cacheLimit = ChunkCache::UsualLimit; ///< Bytes of uncompressed chunks to hold.
    VoDeque<VoUUID> damaged; ///< Files to write although the listings say that they are unchanged.
    /// @{ As in InstallationOptions.
    bool reuseInstalledFiles = false;
    bool refuseForeignFiles = false;
    bool refuseOtherDirectory = false;
    bool refuseOlder = false;
    /// @}
};

} // namespace vo::updater::detail
