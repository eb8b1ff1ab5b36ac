#include <FileSystem/VoPathException.h>

VOCORE_DEFINE_EXCEPTION(VoPathException, "VoPathException")
VoPathException::VoPathException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidPathException, "VoInvalidPathException")
VoInvalidPathException::VoInvalidPathException(const VoString& message, const VoString& path)
    : VoException(message)
    , m_path(path)
{
}

VOCORE_DEFINE_EXCEPTION(VoDirectoryPathException, "VoDirectoryPathException")
VoDirectoryPathException::VoDirectoryPathException(const VoString& path)
    : VoException("Not a valid directory path: " + path)
{
}
