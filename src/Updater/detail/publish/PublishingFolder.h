#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>

#include <cstdint>
#include <utility>

namespace vo::updater::detail {

/// Marks the private folder of a builder as that of a living process, by the lock of a file in it, which ends with the
/// process.
class VOCORE_PRIVATE_EXPORT LivingFolder
{
public:
    explicit LivingFolder(const VoDirectoryPath& folder);

private:
    const VoFileLock m_lock;
};

/// Removes the private folders in the directory for temporary files whose processes were killed, and tells how many
/// there were and how many bytes they held. With `onlyLook` removes nothing.
VOCORE_PRIVATE_EXPORT std::pair<std::uint64_t, std::uint64_t> RemoveDeadFolders(bool onlyLook);

} // namespace vo::updater::detail
