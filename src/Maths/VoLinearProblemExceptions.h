#pragma once

#include <Core/VoException.h>

/// @file
/// Errors of the linear-programming classes.

/// A fault of a linear problem: the family's general type.
class VOCORE_EXPORT VoLinearProblemException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoLinearProblemException)
public:
    VoLinearProblemException(const VoString& message); ///< The message.
};

/// A coefficient or bound that a linear problem cannot take.
class VOCORE_EXPORT VoInvalidCoefficientException : public VoLinearProblemException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidCoefficientException)
public:
    VoInvalidCoefficientException();                        ///< "Invalid coefficient"
    VoInvalidCoefficientException(const VoString& message); ///< The message.
};

/// A vector of coefficients that is longer or shorter than the problem has parameters.
class VOCORE_EXPORT VoInvalidNumberCoefficientsException : public VoInvalidCoefficientException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidNumberCoefficientsException)
public:
    VoInvalidNumberCoefficientsException(); ///< "Invalid number of coefficients"
};

/// A kind of constraint that this kind of problem cannot take.
class VOCORE_EXPORT VoInvalidConstraintTypeException : public VoLinearProblemException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidConstraintTypeException)
public:
    VoInvalidConstraintTypeException(const VoString& message); ///< The message.
};

/// More constraints than were stated when the problem was made.
class VOCORE_EXPORT VoTooManyConstraintsException : public VoLinearProblemException
{
    VOCORE_EXCEPTION_CLASS(VoTooManyConstraintsException)
public:
    VoTooManyConstraintsException(); ///< "Stated number of constraints already added"
};
