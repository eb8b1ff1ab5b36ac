#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Updater/ChunkCache.h>

#include <cstddef>

namespace vo::updater::detail {

/// How a run differs from the usual one.
struct InstallerSettings
{
    /// What becomes of the notes about what the run creates (InstallationJournal).
    enum class Journal
    {
        UntilInstalled, ///< Forgotten at the end of a successful run: the usual one.
        UntilRecorded,  ///< Left to the caller, who forgets them when the listing is written.
        None,           ///< None are made: the installation itself is temporary.
    };

    VoDirectoryPath staging; ///< The staging directory; null: the package's own.
    Journal journal = Journal::UntilInstalled;
    std::size_t cacheLimit = ChunkCache::UsualLimit; ///< Bytes of uncompressed chunks to hold.
    bool reuseInstalledFiles = false;                ///< As in InstallationOptions.
    VoDeque<VoUUID> damaged; ///< Files to write although the listings say that they are unchanged.
};

} // namespace vo::updater::detail
