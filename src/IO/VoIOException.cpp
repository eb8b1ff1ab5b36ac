#include <IO/VoIOException.h>

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>

VOCORE_DEFINE_EXCEPTION(VoIOException, "VoIOException")
VOCORE_DEFINE_EXCEPTION(VoIOInvalidReadException, "VoIOInvalidReadException")
VOCORE_DEFINE_EXCEPTION(VoIOInvalidWriteException, "VoIOInvalidWriteException")

VoIOException::VoIOException() = default;

VoIOException::VoIOException(const VoString& message)
    : VoException(message)
{
}

VoIOException::VoIOException(const char* message)
    : VoException(message)
{
}

VoIOException::VoIOException(const std::ios_base::failure& failure)
    : VoException(failure.what())
{
}

VoIOException::VoIOException(const VoIODevice& device)
    : VoException(device.lastError())
{
    if (const auto* file = dynamic_cast<const VoFileDevice*>(&device))
        complete(file->path().path(), file->reason());
}

VoIOInvalidReadException::VoIOInvalidReadException() = default;

VoIOInvalidReadException::VoIOInvalidReadException(const VoString& message)
    : VoException(message)
{
}

VoIOInvalidReadException::VoIOInvalidReadException(const char* message)
    : VoException(message)
{
}

VoIOInvalidWriteException::VoIOInvalidWriteException() = default;

VoIOInvalidWriteException::VoIOInvalidWriteException(const VoString& message)
    : VoException(message)
{
}

VoIOInvalidWriteException::VoIOInvalidWriteException(const char* message)
    : VoException(message)
{
}
