#include <FileSystem/detail/NativeFile.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vo::detail {

namespace {

// Repeats a call that a signal interrupted.
template <typename Call>
auto Retried(Call call) noexcept
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

// Where the medium has nothing that could be forced (pipes, some network volumes), there is nothing to do.
bool IsUnsupportedSync(int code) noexcept
{
    return code == EINVAL || code == ENOTSUP || code == ENOSYS;
}

void SyncDescriptor(int descriptor, std::error_code& error) noexcept
{
    error.clear();
    if (Retried([=] { return ::fsync(descriptor); }) == -1 && !IsUnsupportedSync(errno))
        error = LastSystemError();
}

} // namespace

std::error_code LastSystemError() noexcept
{
    return std::error_code(errno, std::system_category());
}

NativeFile NativeFile::OpenForReading(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    const int descriptor = Retried([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
    if (descriptor == -1) {
        error = LastSystemError();
        return NativeFile();
    }
    NativeFile file(descriptor);
    struct stat information = {};
    if (::fstat(descriptor, &information) == -1)
        error = LastSystemError();
    else if (S_ISDIR(information.st_mode))
        error = std::make_error_code(std::errc::is_a_directory);
    else if (!S_ISREG(information.st_mode))
        error = std::make_error_code(std::errc::operation_not_supported);
    return error ? NativeFile() : std::move(file);
}

NativeFile NativeFile::CreateNew(const std::filesystem::path& path, NewFileAccess access,
                                 std::error_code& error) noexcept
{
    error.clear();
    const mode_t mode = access == NewFileAccess::Usual ? 0666 : 0600;
    const int descriptor =
        Retried([&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode); });
    if (descriptor != -1)
        return NativeFile(descriptor);
    error = LastSystemError();
    return NativeFile();
}

std::size_t NativeFile::read(char* data, std::size_t size, std::error_code& error) noexcept
{
    error.clear();
    const int descriptor = static_cast<int>(m_handle);
    const ssize_t count = Retried([=] { return ::read(descriptor, data, size); });
    if (count >= 0)
        return static_cast<std::size_t>(count);
    error = LastSystemError();
    return 0;
}

void NativeFile::write(const char* data, std::size_t size, std::error_code& error) noexcept
{
    error.clear();
    const int descriptor = static_cast<int>(m_handle);
    while (size != 0) {
        const ssize_t count = Retried([=] { return ::write(descriptor, data, size); });
        if (count == -1) {
            error = LastSystemError();
            return;
        }
        data += count;
        size -= static_cast<std::size_t>(count);
    }
}

void NativeFile::sync(std::error_code& error) noexcept
{
    SyncDescriptor(static_cast<int>(m_handle), error);
}

void NativeFile::close(std::error_code& error) noexcept
{
    error.clear();
    if (!isOpen())
        return;
    // The descriptor is gone even when the call is interrupted; calling again could close a stranger's file.
    if (::close(static_cast<int>(std::exchange(m_handle, NoHandle))) == -1 && errno != EINTR)
        error = LastSystemError();
}

void CreatePrivateDirectory(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    if (::mkdir(path.c_str(), 0700) == -1)
        error = LastSystemError();
}

void CopyAccessList(const std::filesystem::path&, const std::filesystem::path&) noexcept {}

void RemoveFile(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    if (::unlink(path.c_str()) == -1)
        error = LastSystemError();
}

void SyncDirectory(const std::filesystem::path& directory, std::error_code& error) noexcept
{
    error.clear();
    const char* const name = directory.empty() ? "." : directory.c_str();
    const int descriptor = Retried([=] { return ::open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor == -1) {
        error = LastSystemError();
        return;
    }
    SyncDescriptor(descriptor, error);
    ::close(descriptor);
}

} // namespace vo::detail
