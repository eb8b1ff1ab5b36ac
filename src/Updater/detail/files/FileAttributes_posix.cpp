#include <Updater/detail/files/FileAttributes.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/detail/NativePath.h>

#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace vo::updater::detail {

bool SystemCopiesLinks() noexcept
{
    return false;
}

bool MarksExecutables() noexcept
{
    return true;
}

bool IsExecutable(const VoFilePath& path)
{
    struct ::stat found = {};
    if (::stat(vo::detail::ToNative(path).c_str(), &found) == 0)
        return (found.st_mode & S_IXUSR) != 0;
    const std::error_code error(errno, std::system_category());
    if (!vo::detail::MeansMissing(error))
        throw vo::detail::Because(error, VoFileException("status: " + VoString(error.message()), path));
    return false;
}

} // namespace vo::updater::detail
