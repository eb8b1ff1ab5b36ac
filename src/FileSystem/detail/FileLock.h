#pragma once

#include <cstdint>
#include <filesystem>
#include <system_error>

/// What the system does for VoFileLock. One source a platform.
namespace vo::detail {

/// A descriptor, or the system's handle.
using FileLockHandle = std::intptr_t;
inline constexpr FileLockHandle NoFileLock = -1;

/// Makes the file where it is missing and locks it. NoFileLock without an error when another has the lock.
FileLockHandle TakeFileLock(const std::filesystem::path& path, std::error_code& openError, std::error_code& lockError);

/// Lets the lock go, and the file with it unless it holds anything.
void LetFileLockGo(FileLockHandle handle, const std::filesystem::path& path) noexcept;

} // namespace vo::detail
