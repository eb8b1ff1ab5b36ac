#pragma once

#include <Core/VoForward.h>

namespace vo::updater::detail {

/// Whether many files can be forced to disk together, which takes a fraction of the time of one after the other.
bool CanSyncVolume() noexcept;

/// Forces everything that was written to the volume of a directory to disk. REQUIRES CanSyncVolume().
/// @throws VoFileException ("Cannot write to disk: ...") when that fails, as it does when the disk was full or faulty
void SyncVolume(const VoDirectoryPath& directory);

} // namespace vo::updater::detail
