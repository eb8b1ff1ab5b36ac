#include <Updater/detail/files/FileAttributes.h>

namespace vo::updater::detail {

// Making a link takes a right that few users have.
bool SystemCopiesLinks() noexcept
{
    return true;
}

// What runs is told by a file's name.
bool MarksExecutables() noexcept
{
    return false;
}

bool IsExecutable(const VoFilePath&)
{
    return true;
}

} // namespace vo::updater::detail
