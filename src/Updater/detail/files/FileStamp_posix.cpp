#include <Updater/detail/files/FileStamp.h>

#include <FileSystem/detail/NativePath.h>

#include <sys/stat.h>

namespace vo::updater::detail {

namespace {

std::int64_t Nanoseconds(const timespec& time)
{
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace

std::optional<FileStamp> StampOf(const VoFilePath& path)
{
    struct stat status = {};
    if (lstat(vo::detail::ToNative(path).c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileStamp{static_cast<std::uint64_t>(status.st_size), Nanoseconds(status.st_mtim),
                     Nanoseconds(status.st_ctim), static_cast<std::uint64_t>(status.st_ino),
                     static_cast<std::uint64_t>(status.st_dev)};
}

} // namespace vo::updater::detail
