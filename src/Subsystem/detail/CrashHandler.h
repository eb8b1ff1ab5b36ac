#pragma once

#include <Subsystem/detail/CrashRing.h>

#include <filesystem>

namespace vo::logging {

/// The size from which on a crash file is begun anew.
inline constexpr std::size_t LargestCrashFile = 1000000;

/// Lets crashes of the process write the ring to a file before they take their course. Calling it again changes the
/// file. The ring must live until the process ends. Not thread-safe: the caller holds a lock.
/// @throws VoPathSizeFileException when the path does not fit into what is set aside for it
void InstallCrashHandler(const CrashRing& ring, const std::filesystem::path& file);

/// Gives crashes back to whoever had them before. As above.
void RemoveCrashHandler() noexcept;

} // namespace vo::logging
