#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <functional>
#include <memory>

/// Keeps all others, in this process and in others, from what a lock file stands for, as long as it lives.
///
/// The system itself holds the lock and lets it go when the process ends, however that happens: a lock can never be
/// left behind, whatever is in the file and whoever wrote it. The file goes with the lock unless it holds anything; one
/// that a killed process left means nothing. Belongs to one thread.
class VOCORE_EXPORT VoFileLock
{
public:
    /// Makes the file where it is missing (its directory must exist) and takes the lock, if nobody has it.
    /// @throws VoCannotOpenFileException when the file cannot be made or opened
    /// @throws VoFileException "Cannot lock file: " and the system's reason, where the volume has no locks
    explicit VoFileLock(const VoFilePath& path);
    /// As above, but waits for the lock. `waiting`, which must not be empty, is called again and again while it is
    /// taken, about every 20 ms, and may end the wait by throwing.
    VoFileLock(const VoFilePath& path, const std::function<void()>& waiting);
    VoFileLock(const VoFileLock&) = delete;
    VoFileLock& operator=(const VoFileLock&) = delete;
    ~VoFileLock(); ///< Lets the lock go.

    /// Whether the lock is held; false when another had it.
    bool isHeld() const noexcept;

private:
    struct Private;

    void tryLock();

    std::unique_ptr<Private> m_private;
};
