#include <Maths/VoLinearProblemExceptions.h>

#include <Core/VoString.h>

VOCORE_DEFINE_EXCEPTION(VoLinearProblemException, "VoLinearProblemException")
VoLinearProblemException::VoLinearProblemException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidCoefficientException, "VoInvalidCoefficientException")
VoInvalidCoefficientException::VoInvalidCoefficientException()
    : VoLinearProblemException(VoString("Invalid coefficient"))
{
}
VoInvalidCoefficientException::VoInvalidCoefficientException(const VoString& message)
    : VoLinearProblemException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidNumberCoefficientsException, "VoInvalidNumberCoefficientsException")
VoInvalidNumberCoefficientsException::VoInvalidNumberCoefficientsException()
    : VoInvalidCoefficientException(VoString("Invalid number of coefficients"))
{
}

VOCORE_DEFINE_EXCEPTION(VoInvalidConstraintTypeException, "VoInvalidConstraintTypeException")
VoInvalidConstraintTypeException::VoInvalidConstraintTypeException(const VoString& message)
    : VoLinearProblemException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoTooManyConstraintsException, "VoTooManyConstraintsException")
VoTooManyConstraintsException::VoTooManyConstraintsException()
    : VoLinearProblemException(VoString("Stated number of constraints already added"))
{
}
