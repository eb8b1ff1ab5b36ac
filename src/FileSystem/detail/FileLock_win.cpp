#include <FileSystem/detail/FileLock.h>

#include <FileSystem/detail/WindowsCalls.h>

namespace vo::detail {

// The lock is that nobody else may open the file; the system closes it with the process.
FileLockHandle TakeFileLock(const std::filesystem::path& path, std::error_code& openError, std::error_code&)
{
    constexpr int attempts = 50;
    const std::wstring name = SystemName(path);
    for (int attempt = 0;; ++attempt) {
        const HANDLE handle = ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle != INVALID_HANDLE_VALUE)
            return reinterpret_cast<FileLockHandle>(handle);
        const DWORD error = ::GetLastError();
        if (error == ERROR_SHARING_VIOLATION)
            return NoFileLock;
        // Also told while the file of the last holder is going away.
        if (error != ERROR_ACCESS_DENIED || attempt == attempts) {
            openError = ErrorOf(error);
            return NoFileLock;
        }
        ::Sleep(10);
    }
}

void LetFileLockGo(FileLockHandle handle, const std::filesystem::path&) noexcept
{
    const auto file = reinterpret_cast<HANDLE>(handle);
    // What holds bytes was not made by a lock.
    LARGE_INTEGER size = {};
    if (::GetFileSizeEx(file, &size) && size.QuadPart == 0) {
        FILE_DISPOSITION_INFO removal = {TRUE};
        ::SetFileInformationByHandle(file, FileDispositionInfo, &removal, sizeof(removal));
    }
    ::CloseHandle(file);
}

} // namespace vo::detail
