#include <Core/VoMathsException.h>

#include <Core/VoString.h>

VOCORE_DEFINE_EXCEPTION(VoMathsException, "VoMathsException")
VoMathsException::VoMathsException()
    : VoException(VoString("Maths error"))
{
}
VoMathsException::VoMathsException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoDivideByZeroException, "VoDivideByZeroException")
VoDivideByZeroException::VoDivideByZeroException()
    : VoMathsException(VoString("Divide by zero"))
{
}

VOCORE_DEFINE_EXCEPTION(VoDomainException, "VoDomainException")
VoDomainException::VoDomainException()
    : VoMathsException(VoString("Invalid operation"))
{
}
VoDomainException::VoDomainException(double value, double low, double high)
    : VoMathsException("Value (" + VoString::ToString(value) + ") is outside range [" + VoString::ToString(low) + ", " +
                       VoString::ToString(high) + "]")
{
}
VoDomainException::VoDomainException(const VoString& message)
    : VoMathsException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidOperationMathsException, "VoInvalidOperationMathsException")
VoInvalidOperationMathsException::VoInvalidOperationMathsException()
    : VoMathsException(VoString("Invalid operation"))
{
}
VoInvalidOperationMathsException::VoInvalidOperationMathsException(const VoString& message)
    : VoMathsException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoOverflowException, "VoOverflowException")
VoOverflowException::VoOverflowException()
    : VoMathsException(VoString("Overflow - result too large"))
{
}
VoOverflowException::VoOverflowException(const VoString& message)
    : VoMathsException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoUnderflowException, "VoUnderflowException")
VoUnderflowException::VoUnderflowException()
    : VoMathsException(VoString("Underflow - result too small"))
{
}
VoUnderflowException::VoUnderflowException(const VoString& message)
    : VoMathsException(message)
{
}
