#include <Links.h>

#if defined(_WIN32)
#include <windows.h>

#include <aclapi.h>
#endif

namespace vo::test {

#if defined(_WIN32)

void MakeLink(const std::filesystem::path& target, const std::filesystem::path& link)
{
    constexpr DWORD alsoForUsers = 2;
    const bool isDirectory = std::filesystem::is_directory(link.parent_path() / target);
    ::CreateSymbolicLinkW(link.c_str(), target.c_str(),
                          alsoForUsers | (isDirectory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0));
}

bool MayOthersRead(const std::filesystem::path& file)
{
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR access = nullptr;
    std::wstring name = file.native();
    if (::GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                                nullptr, &access) != ERROR_SUCCESS)
        return true;
    bool may = list == nullptr;
    for (DWORD i = 0; list && i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!::GetAce(list, i, &entry) || static_cast<ACE_HEADER*>(entry)->AceType != ACCESS_ALLOWED_ACE_TYPE)
            continue;
        auto& allowed = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
        for (const WELL_KNOWN_SID_TYPE others : {WinWorldSid, WinBuiltinUsersSid, WinAuthenticatedUserSid})
            may = may || ((allowed.Mask & FILE_READ_DATA) != 0 && ::IsWellKnownSid(&allowed.SidStart, others));
    }
    ::LocalFree(access);
    return may;
}

std::shared_ptr<void> HoldFile(const std::filesystem::path& file)
{
    const HANDLE handle = ::CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return handle == INVALID_HANDLE_VALUE ? nullptr : std::shared_ptr<void>(handle, ::CloseHandle);
}

#else

void MakeLink(const std::filesystem::path& target, const std::filesystem::path& link)
{
    std::filesystem::create_symlink(target, link);
}

bool MayOthersRead(const std::filesystem::path& file)
{
    using std::filesystem::perms;
    return (std::filesystem::status(file).permissions() & (perms::group_read | perms::others_read)) != perms::none;
}

#endif

} // namespace vo::test
