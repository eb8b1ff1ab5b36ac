#include <Core/VoFileException.h>

#include <Core/VoString.h>
#include <FileSystem/VoAbstractPath.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>

#include <string>

class VoFileException::Paths
{
public:
    VoFilePath first;
    VoFilePath second;
};

VoFileException::VoFileException(const VoString& message)
    : VoException(message)
    , m_paths(std::make_unique<Paths>())
{
}

VoFileException::VoFileException(const VoString& message, const VoString& path)
    : VoFileException(message, VoFilePath(path), VoFilePath())
{
}

VoFileException::VoFileException(const VoString& message, const char* path)
    : VoFileException(message, VoFilePath(path), VoFilePath())
{
}

VoFileException::VoFileException(const VoString& message, const VoFilePath& path)
    : VoFileException(message, path, VoFilePath())
{
}

VoFileException::VoFileException(const VoString& message, const VoAbstractPath& path)
    : VoFileException(message, VoFilePath(path), VoFilePath())
{
}

VoFileException::VoFileException(const VoString& message, const VoFilePath& path1, const VoFilePath& path2)
    : VoException(message)
    , m_paths(std::make_unique<Paths>(Paths{path1, path2}))
{
}

VoFileException::VoFileException(const VoFileException& other)
    : VoException(other)
    , m_paths(std::make_unique<Paths>(*other.m_paths))
{
}

VoFileException& VoFileException::operator=(const VoFileException& other)
{
    auto paths = std::make_unique<Paths>(*other.m_paths);
    VoException::operator=(other);
    m_paths = std::move(paths);
    return *this;
}

VoFileException::~VoFileException() = default;

const char* VoFileException::name() const
{
    return "VoFileException";
}

const VoFilePath& VoFileException::path1() const
{
    return m_paths->first;
}

const VoFilePath& VoFileException::path2() const
{
    return m_paths->second;
}

namespace {

const char* const CannotOpen = "Cannot open file: ";
const char* const NotFound = "File not found: ";

VoString SizeMessage(const VoFilePath& path)
{
    constexpr std::size_t maximum = 260;
    const std::size_t size = path.path().size();
    const std::size_t excess = size > maximum ? size - maximum : 0;
    return "Path exceeds maximum length by " + VoString(std::to_string(excess)) + " characters for: " + path.path();
}

} // namespace

VOCORE_DEFINE_EXCEPTION(VoCannotOpenFileException, "VoCannotOpenFileException")
VoCannotOpenFileException::VoCannotOpenFileException(const VoString& path)
    : VoFileException(CannotOpen + path, path)
{
}
VoCannotOpenFileException::VoCannotOpenFileException(const VoFilePath& path)
    : VoFileException(CannotOpen + path.path(), path)
{
}
VoCannotOpenFileException::VoCannotOpenFileException(const VoAbstractPath& path)
    : VoCannotOpenFileException(VoFilePath(path))
{
}
VoCannotOpenFileException::VoCannotOpenFileException(const char* path)
    : VoCannotOpenFileException(VoString(path))
{
}
VoCannotOpenFileException::VoCannotOpenFileException(const VoFileDevice& device)
    : VoFileException("Cannot open file (" + device.lastError() + "): " + device.path().path(), device.path())
{
    complete(VoString(), device.reason());
}

VOCORE_DEFINE_EXCEPTION(VoFileLockedException, "VoFileLockedException")
VoFileLockedException::VoFileLockedException(const VoString& path)
    : VoFileException("File already locked: " + path, path)
{
}

VOCORE_DEFINE_EXCEPTION(VoFileNotFoundException, "VoFileNotFoundException")
VoFileNotFoundException::VoFileNotFoundException(const VoString& path)
    : VoFileException(NotFound + path, path)
{
}
VoFileNotFoundException::VoFileNotFoundException(const VoFilePath& path)
    : VoFileException(NotFound + path.path(), path)
{
}
VoFileNotFoundException::VoFileNotFoundException(const VoAbstractPath& path)
    : VoFileNotFoundException(VoFilePath(path))
{
}
VoFileNotFoundException::VoFileNotFoundException(const char* path)
    : VoFileNotFoundException(VoString(path))
{
}

VOCORE_DEFINE_EXCEPTION(VoFileSaveException, "VoFileSaveException")
VoFileSaveException::VoFileSaveException(const VoString& what, const VoString& path)
    : VoFileException("Cannot save [" + what + "]", path)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidPathFileException, "VoInvalidPathFileException")
VoInvalidPathFileException::VoInvalidPathFileException(const VoFilePath& path)
    : VoFileException(VoString("Invalid path: "), path)
{
}
VoInvalidPathFileException::VoInvalidPathFileException(const VoString& message, const VoAbstractPath& path)
    : VoFileException(message + ": " + path.path(), path)
{
}
VoInvalidPathFileException::VoInvalidPathFileException(const VoString& message, const VoFilePath& path)
    : VoFileException(message + ": " + path.path(), path)
{
}

VOCORE_DEFINE_EXCEPTION(VoPathSizeFileException, "VoPathSizeFileException")
VoPathSizeFileException::VoPathSizeFileException()
    : VoFileException(VoString("Path size too long"))
{
}
VoPathSizeFileException::VoPathSizeFileException(const VoFilePath& path)
    : VoFileException(SizeMessage(path))
{
}
