#include <FileSystem/VoTemporaryFile.h>

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

struct VoTemporaryFile::Private
{
    VoFilePath path;
};

namespace {

const VoFilePath& NullFile()
{
    static const auto* path = new VoFilePath;
    return *path;
}

void RemoveQuietly(const VoFilePath& path) noexcept
{
    try {
        VoFileSystem::Remove(path);
    } catch (...) {
        vo::logging::Logger::Get("filesystem")
            .warning("Temporary file not removed: " + path.path() + " (" + vo::CurrentExceptionText() + ")");
    }
}

} // namespace

VoTemporaryFile::VoTemporaryFile()
    : VoTemporaryFile(VoFileSystem::TempDirectory())
{
}

VoTemporaryFile::VoTemporaryFile(const VoDirectoryPath& directory)
    : m_private(std::make_unique<Private>())
{
    VoFilePath path;
    const std::error_code error = vo::detail::MakeUnderNewName([&] {
        path = directory.file(("vo" + vo::detail::RandomNamePart() + ".tmp").c_str());
        std::error_code made;
        vo::detail::NativeFile::CreateNew(vo::detail::ToNative(path), vo::detail::NewFileAccess::OwnerOnly, made);
        return made;
    });
    if (error)
        throw vo::detail::Because(error, VoCannotOpenFileException(path));
    m_private->path = std::move(path);
}

VoTemporaryFile::VoTemporaryFile(VoTemporaryFile&& other) noexcept = default;

VoTemporaryFile& VoTemporaryFile::operator=(VoTemporaryFile&& other) noexcept
{
    VoTemporaryFile old(std::move(*this));
    m_private = std::move(other.m_private);
    return *this;
}

VoTemporaryFile::~VoTemporaryFile()
{
    if (m_private && !m_private->path.isNull())
        RemoveQuietly(m_private->path);
}

const VoFilePath& VoTemporaryFile::path() const noexcept
{
    return m_private ? m_private->path : NullFile();
}

VoFilePath VoTemporaryFile::release()
{
    return m_private ? std::exchange(m_private->path, VoFilePath()) : VoFilePath();
}
