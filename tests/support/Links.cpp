#include <Links.h>

#if defined(_WIN32)
#include <windows.h>
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

#endif

} // namespace vo::test
