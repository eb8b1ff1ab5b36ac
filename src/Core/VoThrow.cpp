#include <Core/VoThrow.h>

#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>

#include <string>

namespace vo::detail {

void ThrowIndexOutOfBounds(std::size_t index, std::size_t size)
{
    throw VoIndexOutOfBoundsException(index, size);
}

void ThrowNullPointer(const char* message)
{
    throw VoNullPointerException(message);
}

void ThrowNotFound(const char* text, std::size_t length)
{
    throw VoNotFoundException(VoString(std::string(text, length)));
}

void ThrowInvalidParameter(const char* message)
{
    throw VoInvalidParameterException(VoString(message));
}

void ThrowInvalidConversion(const char* from, const char* to)
{
    throw VoInvalidConversionException(VoString(from), VoString(to));
}

void ThrowOverflow()
{
    throw VoOverflowException();
}

void ThrowBadAlloc(const char* detail)
{
    throw VoBadAllocException(VoString(detail));
}

} // namespace vo::detail
