#include <FileSystem/detail/NativeNames.h>

namespace vo::detail {

namespace fs = std::filesystem;

fs::file_status LinkStatus(const fs::path& path, std::error_code& error) noexcept
{
    return fs::symlink_status(path, error);
}

fs::file_status TargetStatus(const fs::path& path, std::error_code& error) noexcept
{
    return fs::status(path, error);
}

void RenameNative(const fs::path& from, const fs::path& to, std::error_code& error) noexcept
{
    fs::rename(from, to, error);
}

bool RemoveNative(const fs::path& path, std::error_code& error) noexcept
{
    return fs::remove(path, error);
}

std::uintmax_t RemoveTree(const fs::path& path, std::error_code& error)
{
    const std::uintmax_t removed = fs::remove_all(path, error);
    return error ? 0 : removed;
}

fs::path RealPath(const fs::path& path, std::error_code& error)
{
    return fs::weakly_canonical(path, error);
}

} // namespace vo::detail
