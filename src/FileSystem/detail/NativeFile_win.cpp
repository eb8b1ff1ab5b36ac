#include <FileSystem/detail/NativeFile.h>

#include <algorithm>

#include <windows.h>

namespace vo::detail {

namespace {

HANDLE ToHandle(std::intptr_t handle) noexcept
{
    return reinterpret_cast<HANDLE>(handle);
}

// One call transfers at most this many bytes.
DWORD Portion(std::size_t size) noexcept
{
    return static_cast<DWORD>(std::min<std::size_t>(size, 1U << 30));
}

} // namespace

std::error_code LastSystemError() noexcept
{
    return std::error_code(static_cast<int>(::GetLastError()), std::system_category());
}

NativeFile NativeFile::OpenForReading(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    const HANDLE handle =
        ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        error = LastSystemError();
        return NativeFile();
    }
    NativeFile file(reinterpret_cast<Handle>(handle));
    if (::GetFileType(handle) != FILE_TYPE_DISK) {
        error = std::make_error_code(std::errc::operation_not_supported);
        return NativeFile();
    }
    return file;
}

NativeFile NativeFile::CreateNew(const std::filesystem::path& path, NewFileAccess, std::error_code& error) noexcept
{
    // The directories that hold such files inherit access for their owner only. Others may write too: those that take
    // the path of a new file.
    error.clear();
    const HANDLE handle =
        ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE)
        return NativeFile(reinterpret_cast<Handle>(handle));
    error = LastSystemError();
    return NativeFile();
}

std::size_t NativeFile::read(char* data, std::size_t size, std::error_code& error) noexcept
{
    error.clear();
    DWORD count = 0;
    if (::ReadFile(ToHandle(m_handle), data, Portion(size), &count, nullptr))
        return count;
    error = LastSystemError();
    return 0;
}

void NativeFile::write(const char* data, std::size_t size, std::error_code& error) noexcept
{
    error.clear();
    while (size != 0) {
        DWORD count = 0;
        if (!::WriteFile(ToHandle(m_handle), data, Portion(size), &count, nullptr)) {
            error = LastSystemError();
            return;
        }
        data += count;
        size -= count;
    }
}

void NativeFile::sync(std::error_code& error) noexcept
{
    error.clear();
    if (!::FlushFileBuffers(ToHandle(m_handle)))
        error = LastSystemError();
}

void NativeFile::close(std::error_code& error) noexcept
{
    error.clear();
    if (isOpen() && !::CloseHandle(ToHandle(std::exchange(m_handle, NoHandle))))
        error = LastSystemError();
}

void CreatePrivateDirectory(const std::filesystem::path& path, std::error_code& error) noexcept
{
    // Below the user's own temporary directory the inherited access is that of the user.
    error.clear();
    if (!::CreateDirectoryW(path.c_str(), nullptr))
        error = LastSystemError();
}

// The system removes no file that is marked as read-only, and no link to a directory as if it were a file.
void RemoveFile(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        error = LastSystemError();
        return;
    }
    const bool isMarked = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isMarked)
        ::SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (isDirectory ? ::RemoveDirectoryW(path.c_str()) : ::DeleteFileW(path.c_str()))
        return;
    error = LastSystemError();
    if (isMarked)
        ::SetFileAttributesW(path.c_str(), attributes);
}

void SyncDirectory(const std::filesystem::path&, std::error_code& error) noexcept
{
    error.clear();
}

} // namespace vo::detail
