#include <FileSystem/VoFileLock.h>

#include <FileSystem/detail/FileLock.h>

VoFileLock::VoFileLock(const VoFilePath& path)
    : m_private(std::make_unique<vo::detail::FileLock>(path))
{
}

VoFileLock::VoFileLock(const VoFilePath& path, const std::function<void()>& waiting)
    : m_private(std::make_unique<vo::detail::FileLock>(path, waiting))
{
}

VoFileLock::~VoFileLock() = default;

bool VoFileLock::isHeld() const noexcept
{
    return m_private->isHeld();
}
