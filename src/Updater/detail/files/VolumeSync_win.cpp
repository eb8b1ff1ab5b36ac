#include <Updater/detail/files/VolumeSync.h>

namespace vo::updater::detail {

// The system flushes a volume for administrators only.
bool CanSyncVolume() noexcept
{
    return false;
}

void SyncVolume(const VoDirectoryPath&) {}

} // namespace vo::updater::detail
