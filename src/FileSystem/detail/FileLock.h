#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <system_error>

namespace vo::detail {

/// Keeps all others, in this process and in others, from what a lock file stands for, as long as it lives.
///
/// The system itself holds the lock and lets it go when the process ends, however that happens: a lock can never be
/// left behind, whatever is in the file and whoever wrote it. The file goes with the lock unless it holds anything; one
/// that a killed process left means nothing.
class VOCORE_PRIVATE_EXPORT FileLock
{
public:
    /// Makes the file where it is missing (its directory must exist) and takes the lock, if nobody has it.
    /// @throws VoCannotOpenFileException when the file cannot be made or opened
    /// @throws VoFileException "Cannot lock file: " and the system's reason, where the volume has no locks
    explicit FileLock(const VoFilePath& path);
    /// As above, but waits for the lock. `waiting` is called again and again while it is taken, about every 20 ms, and
    /// may end the wait by throwing.
    FileLock(const VoFilePath& path, const std::function<void()>& waiting);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock();

    /// Whether the lock is held; false when another had it.
    bool isHeld() const noexcept { return m_handle != NoHandle; }

private:
    using Handle = std::intptr_t; // a descriptor, or the system's handle
    static constexpr Handle NoHandle = -1;

    void tryLock();
    /// NoHandle without an error when another has the lock.
    static Handle take(const std::filesystem::path& path, std::error_code& openError, std::error_code& lockError);
    static void letGo(Handle handle, const std::filesystem::path& path) noexcept;

    const VoFilePath m_path;
    const std::filesystem::path m_native;
    Handle m_handle = NoHandle;
};

} // namespace vo::detail
