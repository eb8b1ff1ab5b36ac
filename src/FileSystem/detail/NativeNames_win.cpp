#include <FileSystem/detail/NativeNames.h>

#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/WindowsCalls.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace vo::detail {

namespace fs = std::filesystem;

namespace {

fs::file_status StatusOf(fs::file_type type, DWORD attributes) noexcept
{
    constexpr fs::perms writing = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0 && type == fs::file_type::regular;
    return fs::file_status(type, isReadOnly ? fs::perms::all & ~writing : fs::perms::all);
}

fs::file_status StatusOf(DWORD attributes) noexcept
{
    const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return StatusOf(isDirectory ? fs::file_type::directory : fs::file_type::regular, attributes);
}

fs::file_status Unknown(std::error_code& error) noexcept
{
    error = LastSystemError();
    const bool isMissing = error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    return fs::file_status(isMissing ? fs::file_type::not_found : fs::file_type::none);
}

// Other marks of this kind (files kept in a cloud, merged content) stand for files as any.
bool IsLink(const fs::path& path)
{
    const WindowsHandle file = OpenName(path, FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    FILE_ATTRIBUTE_TAG_INFO info = {};
    return file.isOpen() && ::GetFileInformationByHandleEx(file.get(), FileAttributeTagInfo, &info, sizeof(info)) &&
           (info.ReparseTag == IO_REPARSE_TAG_SYMLINK || info.ReparseTag == IO_REPARSE_TAG_MOUNT_POINT);
}

bool IsDirectoryName(const std::wstring& name) noexcept
{
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Replaces files that are open and read-only ones too; not every volume can do that.
bool RenameOpened(const fs::path& from, const std::wstring& to)
{
    constexpr DWORD replacing = 0x1;
    constexpr DWORD asElsewhere = 0x2;
    constexpr DWORD alsoReadOnly = 0x40;
    constexpr auto renameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
    const WindowsHandle file = OpenName(from, DELETE | SYNCHRONIZE, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file.isOpen())
        return false;
    const std::size_t bytes = to.size() * sizeof(wchar_t);
    std::vector<std::byte> storage(sizeof(FILE_RENAME_INFO) + bytes + sizeof(wchar_t));
    FILE_RENAME_INFO info = {};
    const DWORD flags = replacing | asElsewhere | alsoReadOnly;
    std::memcpy(&info, &flags, sizeof(flags)); // the member that older headers lack is the first
    info.FileNameLength = static_cast<DWORD>(bytes);
    std::memcpy(storage.data(), &info, sizeof(info));
    std::memcpy(storage.data() + offsetof(FILE_RENAME_INFO, FileName), to.c_str(), bytes + sizeof(wchar_t));
    return ::SetFileInformationByHandle(file.get(), renameInfoEx, storage.data(), static_cast<DWORD>(storage.size())) !=
           0;
}

bool RenamePlainly(const std::wstring& from, const std::wstring& to)
{
    if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING))
        return true;
    const DWORD error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(to.c_str());
    constexpr DWORD asked = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY;
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & asked) == FILE_ATTRIBUTE_READONLY) {
        ::SetFileAttributesW(to.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
        if (::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING))
            return true;
        ::SetFileAttributesW(to.c_str(), attributes);
    }
    ::SetLastError(error);
    return false;
}

// Renaming over a file that somebody holds is merely "denied".
bool IsHeld(const fs::path& path)
{
    return !OpenName(path, DELETE, FILE_FLAG_OPEN_REPARSE_POINT).isOpen() &&
           ::GetLastError() == ERROR_SHARING_VIOLATION;
}

std::vector<std::wstring> NamesIn(const fs::path& directory, std::error_code& error)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW data = {};
    const HANDLE search = ::FindFirstFileW(SystemName(directory / L"*").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) {
        error = LastSystemError();
        return names;
    }
    do {
        const std::wstring name = data.cFileName;
        if (name != L"." && name != L"..")
            names.push_back(name);
    } while (::FindNextFileW(search, &data));
    if (::GetLastError() != ERROR_NO_MORE_FILES)
        error = LastSystemError();
    ::FindClose(search);
    return names;
}

std::uintmax_t RemoveBelow(const fs::path& path, std::error_code& error)
{
    std::uintmax_t removed = 0;
    std::error_code looked;
    if (LinkStatus(path, looked).type() == fs::file_type::directory) {
        for (const std::wstring& name : NamesIn(path, error)) {
            removed += RemoveBelow(path / name, error);
            if (error)
                return removed;
        }
    }
    if (!error && RemoveNative(path, error))
        ++removed;
    return removed;
}

fs::path FinalPath(const WindowsHandle& file)
{
    std::wstring text(32768, L'\0');
    const DWORD size = ::GetFinalPathNameByHandleW(file.get(), text.data(), static_cast<DWORD>(text.size()), 0);
    text.resize(size < text.size() ? size : 0);
    if (text.compare(0, 8, L"\\\\?\\UNC\\") == 0)
        return L"\\\\" + text.substr(8);
    return text.compare(0, 4, L"\\\\?\\") == 0 ? text.substr(4) : text;
}

} // namespace

fs::file_status LinkStatus(const fs::path& path, std::error_code& error) noexcept
{
    error.clear();
    const DWORD attributes = ::GetFileAttributesW(SystemName(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Unknown(error);
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLink(path))
        return fs::file_status(fs::file_type::symlink, fs::perms::all);
    return StatusOf(attributes);
}

fs::file_status TargetStatus(const fs::path& path, std::error_code& error) noexcept
{
    const fs::file_status status = LinkStatus(path, error);
    if (error || status.type() != fs::file_type::symlink)
        return status;
    const WindowsHandle file = OpenName(path, FILE_READ_ATTRIBUTES, 0);
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!file.isOpen() || !::GetFileInformationByHandle(file.get(), &info))
        return Unknown(error);
    return StatusOf(info.dwFileAttributes);
}

void RenameNative(const fs::path& from, const fs::path& to, std::error_code& error) noexcept
{
    error.clear();
    const std::wstring source = SystemName(from);
    const std::wstring target = SystemName(to);
    const auto mayPass = [&] { return !IsDirectoryName(target) && !IsDirectoryName(source); };
    if (Persistently([&] { return RenameOpened(from, target) || RenamePlainly(source, target); }, mayPass))
        return;
    const DWORD failure = ::GetLastError();
    const bool isSourceHeld = IsHeld(from);
    ::SetLastError(isSourceHeld || IsHeld(to) ? ERROR_SHARING_VIOLATION : failure);
    error = LastErrorOf(isSourceHeld ? from : to);
    if (failure == ERROR_ACCESS_DENIED && IsDirectoryName(target) && !IsDirectoryName(source))
        error = std::make_error_code(std::errc::is_a_directory);
}

bool RemoveNative(const fs::path& path, std::error_code& error) noexcept
{
    RemoveFile(path, error); // takes directories as well
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        error.clear();
        return false;
    }
    return !error;
}

std::uintmax_t RemoveTree(const fs::path& path, std::error_code& error)
{
    error.clear();
    const std::uintmax_t removed = RemoveBelow(path, error);
    return error ? 0 : removed;
}

fs::path RealPath(const fs::path& path, std::error_code& error)
{
    fs::path full = fs::absolute(path, error).lexically_normal();
    if (!full.has_filename() && full.has_relative_path())
        full = full.parent_path();
    fs::path missing;
    for (fs::path existing = full; !error; existing = existing.parent_path()) {
        const WindowsHandle file = OpenName(existing, FILE_READ_ATTRIBUTES, 0);
        if (file.isOpen()) {
            const fs::path real = FinalPath(file);
            const fs::path& start = real.empty() ? existing : real;
            return missing.empty() ? start : start / missing; // nothing appended would append a separator
        }
        error = LastSystemError();
        if (error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
            break;
        error.clear();
        if (!existing.has_relative_path())
            break;
        if (existing.has_filename())
            missing = missing.empty() ? existing.filename() : existing.filename() / missing;
    }
    return full;
}

} // namespace vo::detail
