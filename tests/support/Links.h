#pragma once

#include <FileSystem/detail/NativeNames.h>

#include <filesystem>
#include <memory>
#include <system_error>

namespace vo::test {

/// Makes a symbolic link; by the system's own call where the standard library makes none. Where the system has not done
/// so (the user may not, or it knows none), `link` does not exist afterwards.
void MakeLink(const std::filesystem::path& target, const std::filesystem::path& link);

/// Whether the system lets other users of the machine read a file, who are not its administrators.
bool MayOthersRead(const std::filesystem::path& file);

#if defined(_WIN32)
/// Opens a file as a program that lets nobody else use it; until the result ends.
std::shared_ptr<void> HoldFile(const std::filesystem::path& file);
#endif

/// Whether MakeLink() does anything here; else a test of links has nothing to test.
inline bool CanMakeLinks(const std::filesystem::path& directory)
{
    const std::filesystem::path link = directory / "can-make-links";
    std::error_code error;
    MakeLink("nowhere", link);
    const bool isLink = std::filesystem::is_symlink(vo::detail::LinkStatus(link, error));
    vo::detail::RemoveNative(link, error);
    return isLink;
}

} // namespace vo::test

/// Ends a test of links where there are none.
#define VO_SKIP_WITHOUT_LINKS(directory)                                                                               \
    if (!::vo::test::CanMakeLinks(directory))                                                                          \
    GTEST_SKIP() << "no symbolic links can be made here"
