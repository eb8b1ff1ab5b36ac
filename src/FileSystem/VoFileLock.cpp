#include <FileSystem/VoFileLock.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/FileLock.h>
#include <FileSystem/detail/NativePath.h>

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

struct VoFileLock::Private
{
    VoFilePath path;
    std::filesystem::path native;
    vo::detail::FileLockHandle handle = vo::detail::NoFileLock;
};

VoFileLock::VoFileLock(const VoFilePath& path)
    : m_private(std::make_unique<Private>(Private{path, vo::detail::ToNative(path)}))
{
    vo::detail::RequireValidLength(path);
    tryLock();
}

VoFileLock::VoFileLock(const VoFilePath& path, const std::function<void()>& waiting)
    : VoFileLock(path)
{
    while (!isHeld()) {
        waiting();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        tryLock();
    }
}

VoFileLock::~VoFileLock()
{
    if (isHeld())
        vo::detail::LetFileLockGo(m_private->handle, m_private->native);
}

bool VoFileLock::isHeld() const noexcept
{
    return m_private->handle != vo::detail::NoFileLock;
}

void VoFileLock::tryLock()
{
    std::error_code openError;
    std::error_code lockError;
    m_private->handle = vo::detail::TakeFileLock(m_private->native, openError, lockError);
    if (openError)
        throw vo::detail::Because(openError, VoCannotOpenFileException(m_private->path));
    if (lockError)
        throw vo::detail::Because(
            lockError, VoFileException("Cannot lock file: " + VoString(lockError.message()), m_private->path));
}
