#include <FileSystem/VoTemporaryDir.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <FileSystem/detail/TemporaryName.h>
#include <Subsystem/VoLogging.h>

#include <utility>

struct VoTemporaryDir::Private
{
    VoDirectoryPath path;
};

namespace {

const VoDirectoryPath& NullDirectory()
{
    static const auto* path = new VoDirectoryPath;
    return *path;
}

void RemoveQuietly(const VoDirectoryPath& path) noexcept
{
    try {
        VoFileSystem::RemoveAll(path);
    } catch (...) {
        vo::logging::Logger::Get("filesystem")
            .warning("Temporary directory not removed: " + path.path() + " (" + vo::CurrentExceptionText() + ")");
    }
}

} // namespace

VoTemporaryDir::VoTemporaryDir()
    : VoTemporaryDir(VoFileSystem::TempDirectory())
{
}

VoTemporaryDir::VoTemporaryDir(const VoDirectoryPath& parent)
    : m_private(std::make_unique<Private>())
{
    VoDirectoryPath path;
    const std::error_code error = vo::detail::MakeUnderNewName([&] {
        path = parent.directory("vo" + vo::detail::RandomNamePart());
        std::error_code made;
        vo::detail::CreatePrivateDirectory(vo::detail::ToNative(path), made);
        return made;
    });
    if (error)
        throw vo::detail::Because(error, VoFileException("create_directory: " + VoString(error.message()), path));
    m_private->path = std::move(path);
}

VoTemporaryDir::VoTemporaryDir(VoTemporaryDir&& other) noexcept = default;

VoTemporaryDir& VoTemporaryDir::operator=(VoTemporaryDir&& other) noexcept
{
    VoTemporaryDir old(std::move(*this));
    m_private = std::move(other.m_private);
    return *this;
}

VoTemporaryDir::~VoTemporaryDir()
{
    if (m_private && !m_private->path.isNull())
        RemoveQuietly(m_private->path);
}

const VoDirectoryPath& VoTemporaryDir::path() const noexcept
{
    return m_private ? m_private->path : NullDirectory();
}

VoFilePath VoTemporaryDir::path(const VoString& name) const
{
    return path().file(name);
}

VoDirectoryPath VoTemporaryDir::release()
{
    return m_private ? std::exchange(m_private->path, VoDirectoryPath()) : VoDirectoryPath();
}
