#include <Core/VoException.h>

#include <Core/VoString.h>

#include <string>

class VoException::Private
{
public:
    VoString message;
    VoString subject;
    VoString reason;
};

VoExceptionInterface::~VoExceptionInterface() = default;

VoException::VoException()
    : m_private(std::make_unique<Private>())
{
}

VoException::VoException(const VoString& message)
    : m_private(std::make_unique<Private>(Private{message, VoString(), VoString()}))
{
}

VoException::VoException(const VoException& other)
    : VoExceptionInterface(other)
    , m_private(std::make_unique<Private>(*other.m_private))
{
}

VoException& VoException::operator=(const VoException& other)
{
    m_private = std::make_unique<Private>(*other.m_private);
    return *this;
}

VoException::~VoException() = default;

const char* VoException::what() const
{
    return m_private->message.c_str();
}

const VoString& VoException::message() const
{
    return m_private->message;
}

VoException::operator const VoString&() const
{
    return m_private->message;
}

const VoString& VoException::subject() const
{
    return m_private->subject;
}

const VoString& VoException::reason() const
{
    return m_private->reason;
}

void VoException::complete(const VoString& subject, const VoString& reason)
{
    if (m_private->subject.isEmpty())
        m_private->subject = subject;
    if (m_private->reason.isEmpty())
        m_private->reason = reason;
}

namespace {

template <typename Number>
VoString Bounds(Number index, Number size)
{
    return VoString(" [" + std::to_string(index) + "," + std::to_string(size) + "]");
}

const char* const IndexOutOfBounds = "Index out of bounds";

} // namespace

VOCORE_DEFINE_EXCEPTION(VoIndexOutOfBoundsException, "VoIndexOutOfBoundsException")
VoIndexOutOfBoundsException::VoIndexOutOfBoundsException()
    : VoException(VoString(IndexOutOfBounds))
{
}
VoIndexOutOfBoundsException::VoIndexOutOfBoundsException(int index, int size)
    : VoIndexOutOfBoundsException(VoString(IndexOutOfBounds), index, size)
{
}
VoIndexOutOfBoundsException::VoIndexOutOfBoundsException(std::size_t index, std::size_t size)
    : VoIndexOutOfBoundsException(VoString(IndexOutOfBounds), index, size)
{
}
VoIndexOutOfBoundsException::VoIndexOutOfBoundsException(const VoString& message, int index, int size)
    : VoException(message + Bounds(index, size))
{
}
VoIndexOutOfBoundsException::VoIndexOutOfBoundsException(const VoString& message, std::size_t index, std::size_t size)
    : VoException(message + Bounds(index, size))
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidCallException, "VoInvalidCallException")
VoInvalidCallException::VoInvalidCallException() = default;
VoInvalidCallException::VoInvalidCallException(const VoString& message)
    : VoException(message)
{
}
VoInvalidCallException::VoInvalidCallException(const char* message)
    : VoException(VoString(message))
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidCastException, "VoInvalidCastException")
VoInvalidCastException::VoInvalidCastException(const VoString& from, const VoString& to)
    : VoException("Invalid cast from " + from + " to " + to)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidConversionException, "VoInvalidConversionException")
VoInvalidConversionException::VoInvalidConversionException(const VoString& from, const VoString& to)
    : VoException("Invalid conversion from " + from + " to " + to)
{
}
VoInvalidConversionException::VoInvalidConversionException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidParameterException, "VoInvalidParameterException")
VoInvalidParameterException::VoInvalidParameterException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidUseException, "VoInvalidUseException")
VoInvalidUseException::VoInvalidUseException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoUndefinedFunctionException, "VoUndefinedFunctionException")
VoUndefinedFunctionException::VoUndefinedFunctionException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoNotFoundException, "VoNotFoundException")
VoNotFoundException::VoNotFoundException()
    : VoException(VoString("Item not found"))
{
}
VoNotFoundException::VoNotFoundException(const VoString& item)
    : VoException("Item not found: " + item)
{
}

VOCORE_DEFINE_EXCEPTION(VoNotImplementedException, "VoNotImplementedException")
VoNotImplementedException::VoNotImplementedException()
    : VoException(VoString("Not implemented"))
{
}
VoNotImplementedException::VoNotImplementedException(const VoString& what)
    : VoException("Not implemented: " + what)
{
}

VOCORE_DEFINE_EXCEPTION(VoNullPointerException, "VoNullPointerException")
VoNullPointerException::VoNullPointerException() = default;
VoNullPointerException::VoNullPointerException(const VoString& message)
    : VoException(message)
{
}
VoNullPointerException::VoNullPointerException(const char* message)
    : VoException(VoString(message))
{
}

VOCORE_DEFINE_EXCEPTION(VoUserCancelledException, "VoUserCancelledException")
VoUserCancelledException::VoUserCancelledException()
    : VoException(VoString("User cancelled"))
{
}
VoUserCancelledException::VoUserCancelledException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoValidationException, "Validation exception")
VoValidationException::VoValidationException() = default;
VoValidationException::VoValidationException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoDamagedContentException, "VoDamagedContentException")
VoDamagedContentException::VoDamagedContentException(const VoString& message)
    : VoValidationException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoBufferException, "Buffer exception")
VoBufferException::VoBufferException() = default;
VoBufferException::VoBufferException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoBufferOverflowException, "Buffer overflow exception")
VoBufferOverflowException::VoBufferOverflowException() = default;
VoBufferOverflowException::VoBufferOverflowException(const VoString& message)
    : VoBufferException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoBufferUnderflowException, "Buffer underflow exception")
VoBufferUnderflowException::VoBufferUnderflowException() = default;
VoBufferUnderflowException::VoBufferUnderflowException(const VoString& message)
    : VoBufferException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoStackLimitException, "VoStackLimitException")
VoStackLimitException::VoStackLimitException()
    : VoException(VoString("Stack limit reached"))
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidMimeDataException, "VoInvalidMimeDataException")
VoInvalidMimeDataException::VoInvalidMimeDataException()
    : VoException(VoString("No MIME data available available"))
{
}
VoInvalidMimeDataException::VoInvalidMimeDataException(const VoString& type)
    : VoException("No MIME data of given type available: " + type)
{
}

VOCORE_DEFINE_EXCEPTION(VoNoClipboardException, "VoNoClipboardException")
VoNoClipboardException::VoNoClipboardException()
    : VoException(VoString("No clipboard available"))
{
}
VoNoClipboardException::VoNoClipboardException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoBadAllocException, "VoBadAllocException")
VoBadAllocException::VoBadAllocException(const VoString& detail)
    : VoException("Bad memory allocation: " + detail)
{
}
