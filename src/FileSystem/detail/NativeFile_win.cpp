#include <FileSystem/detail/NativeFile.h>

#include <FileSystem/detail/WindowsCalls.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <sddl.h>

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

bool Always() noexcept
{
    return true;
}

bool Never() noexcept
{
    return false;
}

struct LocalMemory
{
    void operator()(void* memory) const noexcept { ::LocalFree(memory); }
};

// Who runs this process, as descriptions of access spell it; empty when the system does not tell.
std::wstring OwnIdentity()
{
    HANDLE opened = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened))
        return {};
    const WindowsHandle token(opened);
    DWORD size = 0;
    ::GetTokenInformation(opened, TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> user(size);
    wchar_t* text = nullptr;
    if (!::GetTokenInformation(opened, TokenUser, user.data(), size, &size) ||
        !::ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text))
        return {};
    const std::unique_ptr<wchar_t, LocalMemory> kept(text);
    return text;
}

// This user, the system and its administrators, for what is made and all that will be in it; nothing is inherited.
std::unique_ptr<void, LocalMemory> OwnersAccess()
{
    const std::wstring user = OwnIdentity();
    PSECURITY_DESCRIPTOR access = nullptr;
    if (!user.empty())
        ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
            (L"D:P(A;OICI;FA;;;" + user + L")(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)").c_str(), SDDL_REVISION_1, &access,
            nullptr);
    return std::unique_ptr<void, LocalMemory>(access);
}

// How many entries of the list the directory gave.
DWORD InheritedEntries(PACL list) noexcept
{
    DWORD count = 0;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (::GetAce(list, i, &entry) && (static_cast<ACE_HEADER*>(entry)->AceFlags & INHERITED_ACE) != 0)
            ++count;
    }
    return count;
}

} // namespace

std::error_code LastSystemError() noexcept
{
    return ErrorOf(::GetLastError());
}

NativeFile NativeFile::OpenForReading(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    const std::wstring name = SystemName(path);
    HANDLE handle = INVALID_HANDLE_VALUE;
    const auto open = [&] {
        handle = ::CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
        return handle != INVALID_HANDLE_VALUE;
    };
    if (!Persistently(open, Never)) {
        error = LastErrorOf(path);
        const DWORD attributes = ::GetFileAttributesW(name.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            error = std::make_error_code(std::errc::is_a_directory);
        return NativeFile();
    }
    NativeFile file(reinterpret_cast<Handle>(handle));
    if (::GetFileType(handle) != FILE_TYPE_DISK) {
        error = std::make_error_code(std::errc::operation_not_supported);
        return NativeFile();
    }
    return file;
}

NativeFile NativeFile::CreateNew(const std::filesystem::path& path, NewFileAccess access,
                                 std::error_code& error) noexcept
{
    error.clear();
    std::unique_ptr<void, LocalMemory> owners;
    if (access == NewFileAccess::OwnerOnly)
        owners = OwnersAccess();
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), owners.get(), FALSE};
    // Others may write too: those that take the path of a new file.
    const HANDLE handle =
        ::CreateFileW(SystemName(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      owners ? &attributes : nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
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
    error.clear();
    const std::unique_ptr<void, LocalMemory> access = OwnersAccess();
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), access.get(), FALSE};
    if (!::CreateDirectoryW(SystemName(path).c_str(), access ? &attributes : nullptr))
        error = LastSystemError();
}

// The list is copied as it stands: the calls that know of inheritance would add what the new file's directory gives.
void CopyAccessList(const std::filesystem::path& from, const std::filesystem::path& to) noexcept
{
    const std::wstring name = SystemName(from);
    DWORD size = 0;
    ::GetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<unsigned char> access(size);
    PACL list = nullptr;
    BOOL hasList = FALSE;
    BOOL isUsual = FALSE;
    if (size == 0 || !::GetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION, access.data(), size, &size) ||
        !::GetSecurityDescriptorDacl(access.data(), &hasList, &list, &isUsual) || !hasList || !list)
        return;
    const DWORD inherited = InheritedEntries(list);
    if (inherited > 0 && inherited == list->AceCount)
        return;
    const DWORD isKeptApart = inherited == 0 ? PROTECTED_DACL_SECURITY_INFORMATION : 0;
    ::SetFileSecurityW(SystemName(to).c_str(), DACL_SECURITY_INFORMATION | isKeptApart, access.data());
}

// The system removes no file that is marked as read-only, and no link to a directory as if it were a file.
void RemoveFile(const std::filesystem::path& path, std::error_code& error) noexcept
{
    error.clear();
    const std::wstring name = SystemName(path);
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        error = LastSystemError();
        return;
    }
    const bool isMarked = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isMarked)
        ::SetFileAttributesW(name.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const auto remove = [&] {
        return (isDirectory ? ::RemoveDirectoryW(name.c_str()) : ::DeleteFileW(name.c_str())) != 0;
    };
    if (isDirectory ? Persistently(remove, Never) : Persistently(remove, Always))
        return;
    error = LastErrorOf(path);
    if (isMarked)
        ::SetFileAttributesW(name.c_str(), attributes);
}

// Names are the volume's own care here; only a directory that is not there is told.
void SyncDirectory(const std::filesystem::path& directory, std::error_code& error) noexcept
{
    error.clear();
    if (!directory.empty() && ::GetFileAttributesW(SystemName(directory).c_str()) == INVALID_FILE_ATTRIBUTES)
        error = LastSystemError();
}

} // namespace vo::detail
