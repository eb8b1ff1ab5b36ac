#include <FileSystem/detail/FileLock.h>

#include <FileSystem/detail/NativeFile.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vo::detail {

namespace {

// Closed on exec: the lock belongs to the open file, and a child would hold it on.
int Open(const std::filesystem::path& path) noexcept
{
    constexpr int flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | flags, 0666);
    // Another user's file can be locked all the same.
    if (descriptor == -1 && (errno == EACCES || errno == EPERM))
        descriptor = ::open(path.c_str(), O_RDONLY | flags);
    return descriptor;
}

// Whether the descriptor is still that of the path: whoever had the lock before removed the file with it. `size` is
// that of the file. Where it cannot be looked, errno says why; it is 0 otherwise.
bool IsAtPath(int descriptor, const std::filesystem::path& path, off_t& size) noexcept
{
    struct stat held = {};
    struct stat named = {};
    errno = 0;
    if (::fstat(descriptor, &held) == -1 || ::stat(path.c_str(), &named) == -1) {
        if (errno == ENOENT)
            errno = 0;
        return false;
    }
    size = held.st_size;
    return held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

} // namespace

FileLockHandle TakeFileLock(const std::filesystem::path& path, std::error_code& openError, std::error_code& lockError)
{
    for (;;) {
        const int descriptor = Open(path);
        if (descriptor == -1 && errno == EINTR)
            continue;
        if (descriptor == -1) {
            openError = LastSystemError();
            return NoFileLock;
        }
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
            off_t size = 0;
            if (IsAtPath(descriptor, path, size))
                return descriptor;
            const std::error_code error = LastSystemError();
            ::close(descriptor);
            if (!error)
                continue;
            lockError = error;
            return NoFileLock;
        }
        const std::error_code error = LastSystemError();
        ::close(descriptor);
        if (error == std::errc::interrupted)
            continue;
        if (error != std::errc::operation_would_block && error != std::errc::resource_unavailable_try_again)
            lockError = error;
        return NoFileLock;
    }
}

void LetFileLockGo(FileLockHandle handle, const std::filesystem::path& path) noexcept
{
    const auto descriptor = static_cast<int>(handle);
    // While it is still locked: nobody can lock this file any more, and the next one makes another. What holds bytes
    // was not made by a lock.
    off_t size = 0;
    if (IsAtPath(descriptor, path, size) && size == 0)
        ::unlink(path.c_str());
    ::close(descriptor);
}

} // namespace vo::detail
