#include <FileSystem/detail/FileLock.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/detail/NativePath.h>

#include <chrono>
#include <thread>

namespace vo::detail {

FileLock::FileLock(const VoFilePath& path)
    : m_path(path)
    , m_native(ToNative(path))
{
    RequireValidLength(path);
    tryLock();
}

FileLock::FileLock(const VoFilePath& path, const std::function<void()>& waiting)
    : FileLock(path)
{
    while (!isHeld()) {
        waiting();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        tryLock();
    }
}

FileLock::~FileLock()
{
    if (isHeld())
        letGo(m_handle, m_native);
}

void FileLock::tryLock()
{
    std::error_code openError;
    std::error_code lockError;
    m_handle = take(m_native, openError, lockError);
    if (openError)
        throw Because(openError, VoCannotOpenFileException(m_path));
    if (lockError)
        throw Because(lockError, VoFileException("Cannot lock file: " + VoString(lockError.message()), m_path));
}

} // namespace vo::detail
