#pragma once

#include <Core/VoException.h>

/// @file
/// Errors of arithmetic.

/// A failure of a calculation.
class VOCORE_EXPORT VoMathsException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoMathsException)
public:
    VoMathsException();                        ///< "Maths error"
    VoMathsException(const VoString& message); ///< The message.
};

/// A division by zero.
class VOCORE_EXPORT VoDivideByZeroException : public VoMathsException
{
    VOCORE_EXCEPTION_CLASS(VoDivideByZeroException)
public:
    VoDivideByZeroException(); ///< "Divide by zero"
};

/// An argument outside a function's domain.
class VOCORE_EXPORT VoDomainException : public VoMathsException
{
    VOCORE_EXCEPTION_CLASS(VoDomainException)
public:
    VoDomainException(); ///< "Invalid operation"
    /// "Value (" + value + ") is outside range [" + low + ", " + high + "]", the numbers with six significant digits.
    VoDomainException(double value, double low, double high);
    VoDomainException(const VoString& message); ///< The message.
};

/// An operation that has no result.
class VOCORE_EXPORT VoInvalidOperationMathsException : public VoMathsException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidOperationMathsException)
public:
    VoInvalidOperationMathsException();                        ///< "Invalid operation"
    VoInvalidOperationMathsException(const VoString& message); ///< The message.
};

/// A result too large for its type.
class VOCORE_EXPORT VoOverflowException : public VoMathsException
{
    VOCORE_EXCEPTION_CLASS(VoOverflowException)
public:
    VoOverflowException();                        ///< "Overflow - result too large"
    VoOverflowException(const VoString& message); ///< The message.
};

/// A result too small for its type.
class VOCORE_EXPORT VoUnderflowException : public VoMathsException
{
    VOCORE_EXCEPTION_CLASS(VoUnderflowException)
public:
    VoUnderflowException();                        ///< "Underflow - result too small"
    VoUnderflowException(const VoString& message); ///< The message.
};
