#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include <windows.h>

/// What the sources for this one system share.
namespace vo::detail {

/// The name as wide calls take it: from 248 characters on in the form that has no limit.
inline std::wstring SystemName(const std::filesystem::path& path)
{
    constexpr std::size_t longest = 247; // of a directory; files may have 12 more
    const std::wstring& text = path.native();
    if (text.size() <= longest || text.compare(0, 4, L"\\\\?\\") == 0)
        return text;
    std::wstring full(32768, L'\0');
    const DWORD size = ::GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (size == 0 || size >= full.size())
        return text;
    full.resize(size);
    return full.compare(0, 2, L"\\\\") == 0 ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

/// An error of the system, by the standard's name: where the standard library's table lacks it, and for the usual ones,
/// which so have the same words on all systems.
inline std::error_code ErrorOf(DWORD error) noexcept
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME: // "?" in it: nothing can bear it
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
        return std::make_error_code(std::errc::no_such_file_or_directory);
    case ERROR_ACCESS_DENIED:
        return std::make_error_code(std::errc::permission_denied);
    case ERROR_DISK_FULL:
        return std::make_error_code(std::errc::no_space_on_device);
    case ERROR_DIRECTORY:
        return std::make_error_code(std::errc::not_a_directory);
    case ERROR_DIR_NOT_EMPTY:
        return std::make_error_code(std::errc::directory_not_empty);
    case ERROR_ALREADY_EXISTS:
    case ERROR_FILE_EXISTS:
        return std::make_error_code(std::errc::file_exists);
    case ERROR_FILENAME_EXCED_RANGE:
        return std::make_error_code(std::errc::filename_too_long);
    case ERROR_CANT_RESOLVE_FILENAME: // links in a circle
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    case ERROR_NOT_SAME_DEVICE:
        return std::make_error_code(std::errc::cross_device_link);
    default:
        return std::error_code(static_cast<int>(error), std::system_category());
    }
}

/// The thread's last error, that a call about `file` ended with. Where other programs have the file open, the message
/// says so, with their names where the system tells them, until the thread meets the next such error.
std::error_code LastErrorOf(const std::filesystem::path& file) noexcept;

/// Calls again, for about a second, while somebody holds a file open: scanners and indexers do so with new files for a
/// moment. `call` gives false and leaves the error with the system, as its calls do; "access denied" is said of such
/// files as well as of those that never may be changed, so `mayPass` is asked whether it can be the former.
template <typename Call, typename MayPass>
bool Persistently(Call call, MayPass mayPass)
{
    constexpr DWORD longestWait = 512; // milliseconds; they double
    for (DWORD wait = 1;; wait *= 2) {
        if (call())
            return true;
        const DWORD error = ::GetLastError();
        const bool isHeld = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
                            (error == ERROR_ACCESS_DENIED && mayPass());
        if (!isHeld || wait > longestWait) {
            ::SetLastError(error);
            return false;
        }
        ::Sleep(wait);
    }
}

/// A handle that closes; INVALID_HANDLE_VALUE for none.
class WindowsHandle
{
public:
    explicit WindowsHandle(HANDLE handle) noexcept
        : m_handle(handle)
    {
    }
    WindowsHandle(const WindowsHandle&) = delete;
    WindowsHandle& operator=(const WindowsHandle&) = delete;
    ~WindowsHandle()
    {
        if (isOpen())
            ::CloseHandle(m_handle);
    }
    bool isOpen() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

/// Opens what bears a name, directories too, in the way of nobody.
inline WindowsHandle OpenName(const std::filesystem::path& path, DWORD access, DWORD flags)
{
    return WindowsHandle(::CreateFileW(SystemName(path).c_str(), access,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
}

} // namespace vo::detail
