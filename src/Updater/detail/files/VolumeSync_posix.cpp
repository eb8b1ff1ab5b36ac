#include <Updater/detail/files/VolumeSync.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/detail/NativePath.h>

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace vo::updater::detail {

// The call is not in the standard of the system's interfaces; Linux has it.
#if defined(__linux__)

bool CanSyncVolume() noexcept
{
    return true;
}

void SyncVolume(const VoDirectoryPath& directory)
{
    const int descriptor = ::open(vo::detail::ToNative(directory).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isDone = descriptor != -1 && ::syncfs(descriptor) == 0;
    const int code = errno;
    if (descriptor != -1)
        ::close(descriptor);
    const std::error_code error(code, std::system_category());
    if (!isDone)
        throw vo::detail::Because(
            error, VoFileException("Cannot write to disk: " + VoString(error.message()), directory.path()));
}

#else

bool CanSyncVolume() noexcept
{
    return false;
}

void SyncVolume(const VoDirectoryPath&) {}

#endif

} // namespace vo::updater::detail
