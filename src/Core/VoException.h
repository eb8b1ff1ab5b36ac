#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <memory>
#include <type_traits>

/// @file
/// The root of the library's errors and the general exception classes.
///
/// Every failure is reported by throwing an object of this hierarchy; it is not derived from the standard library's
/// exception class. Catch VoException (or a subclass) by reference and show what(). Messages are built once, in the
/// constructor, and are part of the interface. Exception objects are values: they may be copied and thrown again on
/// another thread.

/// Abstract root of all errors.
class VOCORE_EXPORT VoExceptionInterface
{
public:
    /// Type name of the concrete class; a static text.
    virtual const char* name() const = 0;
    /// The message as terminated UTF-8 bytes, owned by this object. Ends at the first zero byte of the message.
    virtual const char* what() const = 0;
    virtual ~VoExceptionInterface();

protected:
    VoExceptionInterface() = default;
    VoExceptionInterface(const VoExceptionInterface&) = default;            ///< For subclasses, which copy the message.
    VoExceptionInterface& operator=(const VoExceptionInterface&) = default; ///< For subclasses, which copy the message.
};

/// An error with a message. Abstract: only its subclasses have a name() and are thrown.
class VOCORE_EXPORT VoException : public VoExceptionInterface
{
public:
    VoException();                                    ///< Empty message.
    VoException(const VoString& message);             ///< The message, unchanged.
    VoException(const VoException& other);            ///< Copies the message.
    VoException& operator=(const VoException& other); ///< Copies the message.
    ~VoException() override;

    const char* what() const override;
    const VoString& message() const;  ///< The whole message.
    operator const VoString&() const; ///< The whole message.

    /// What the failure is about, where the message has no place for it: the path of a file as the library writes it,
    /// or a URL. Empty unless somebody on the exception's way knew.
    const VoString& subject() const;
    /// The system's own words for the cause, where the message has no place for them. Empty unless known.
    const VoString& reason() const;
    /// Adds what whoever throws the exception, or handles it on its way, knows. What is there already stays: who is
    /// nearer to the failure knows better. The message is not changed.
    void complete(const VoString& subject, const VoString& reason);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

/// Declares name() of an exception class that is called by its own name, and its out-of-line destructor.
#define VOCORE_EXCEPTION_CLASS(Class)                                                                                  \
public:                                                                                                                \
    Class(const Class& other);                                                                                         \
    Class& operator=(const Class& other);                                                                              \
    ~Class() override;                                                                                                 \
    const char* name() const override;

/// Defines what VOCORE_EXCEPTION_CLASS declares; `text` is what name() returns.
#define VOCORE_DEFINE_EXCEPTION(Class, text)                                                                           \
    Class::Class(const Class&) = default;                                                                              \
    Class& Class::operator=(const Class&) = default;                                                                   \
    Class::~Class() = default;                                                                                         \
    const char* Class::name() const                                                                                    \
    {                                                                                                                  \
        return text;                                                                                                   \
    }

/// An index beyond a bound.
class VOCORE_EXPORT VoIndexOutOfBoundsException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoIndexOutOfBoundsException)
public:
    VoIndexOutOfBoundsException();                                             ///< "Index out of bounds"
    VoIndexOutOfBoundsException(int index, int size);                          ///< "Index out of bounds [index,size]"
    VoIndexOutOfBoundsException(std::size_t index, std::size_t size);          ///< "Index out of bounds [index,size]"
    VoIndexOutOfBoundsException(const VoString& message, int index, int size); ///< message + " [index,size]"
    VoIndexOutOfBoundsException(const VoString& message, std::size_t index,
                                std::size_t size); ///< message + " [index,size]"

    /// Any other pair of integral types, widened to sizes.
    template <typename I, typename S,
              std::enable_if_t<std::is_integral_v<I> && std::is_integral_v<S> &&
                                   !(std::is_same_v<I, int> && std::is_same_v<S, int>)&&!(
                                       std::is_same_v<I, std::size_t> && std::is_same_v<S, std::size_t>),
                               int> = 0>
    VoIndexOutOfBoundsException(I index, S size)
        : VoIndexOutOfBoundsException(static_cast<std::size_t>(index), static_cast<std::size_t>(size))
    {
    }
    /// @copydoc VoIndexOutOfBoundsException(I, S)
    template <typename I, typename S,
              std::enable_if_t<std::is_integral_v<I> && std::is_integral_v<S> &&
                                   !(std::is_same_v<I, int> && std::is_same_v<S, int>)&&!(
                                       std::is_same_v<I, std::size_t> && std::is_same_v<S, std::size_t>),
                               int> = 0>
    VoIndexOutOfBoundsException(const VoString& message, I index, S size)
        : VoIndexOutOfBoundsException(message, static_cast<std::size_t>(index), static_cast<std::size_t>(size))
    {
    }
};

/// A call that is not possible in the object's state.
class VOCORE_EXPORT VoInvalidCallException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidCallException)
public:
    VoInvalidCallException();                        ///< Empty message.
    VoInvalidCallException(const VoString& message); ///< The message.
    VoInvalidCallException(const char* message);     ///< The message.
};

/// A value read as a type that it is not.
class VOCORE_EXPORT VoInvalidCastException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidCastException)
public:
    VoInvalidCastException(const VoString& from, const VoString& to); ///< "Invalid cast from " + from + " to " + to
};

/// A value that cannot be converted.
class VOCORE_EXPORT VoInvalidConversionException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidConversionException)
public:
    VoInvalidConversionException(const VoString& from,
                                 const VoString& to);      ///< "Invalid conversion from " + from + " to " + to
    VoInvalidConversionException(const VoString& message); ///< The message.
};

/// An argument that a function cannot accept.
class VOCORE_EXPORT VoInvalidParameterException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidParameterException)
public:
    VoInvalidParameterException(const VoString& message); ///< The message.
};

/// A use of an object that it does not offer.
class VOCORE_EXPORT VoInvalidUseException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidUseException)
public:
    VoInvalidUseException(const VoString& message); ///< The message.
};

/// A function that is not defined.
class VOCORE_EXPORT VoUndefinedFunctionException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoUndefinedFunctionException)
public:
    VoUndefinedFunctionException(const VoString& message); ///< The message.
};

/// Something looked up is not there.
class VOCORE_EXPORT VoNotFoundException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoNotFoundException)
public:
    VoNotFoundException();                     ///< "Item not found"
    VoNotFoundException(const VoString& item); ///< "Item not found: " + item
};

/// Something the library does not do.
class VOCORE_EXPORT VoNotImplementedException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoNotImplementedException)
public:
    VoNotImplementedException();                     ///< "Not implemented"
    VoNotImplementedException(const VoString& what); ///< "Not implemented: " + what
};

/// A null pointer where an object is needed.
class VOCORE_EXPORT VoNullPointerException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoNullPointerException)
public:
    VoNullPointerException();                        ///< Empty message.
    VoNullPointerException(const VoString& message); ///< The message.
    VoNullPointerException(const char* message);     ///< The message.
};

/// The user, or a stop flag raised for him, ended the operation.
class VOCORE_EXPORT VoUserCancelledException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoUserCancelledException)
public:
    VoUserCancelledException();                        ///< "User cancelled"
    VoUserCancelledException(const VoString& message); ///< The message.
};

/// Data that fails a check. Its name() is "Validation exception".
class VOCORE_EXPORT VoValidationException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoValidationException)
public:
    VoValidationException();                        ///< Empty message.
    VoValidationException(const VoString& message); ///< The message.
};

/// Content that is not what its checksum promises. Told apart from what is refused because it could do harm.
class VOCORE_EXPORT VoDamagedContentException : public VoValidationException
{
    VOCORE_EXCEPTION_CLASS(VoDamagedContentException)
public:
    VoDamagedContentException(const VoString& message); ///< The message.
};

/// A buffer fault. Its name() is "Buffer exception".
class VOCORE_EXPORT VoBufferException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoBufferException)
public:
    VoBufferException();                        ///< Empty message.
    VoBufferException(const VoString& message); ///< The message.
};

/// More put into a buffer than it holds. Its name() is "Buffer overflow exception".
class VOCORE_EXPORT VoBufferOverflowException : public VoBufferException
{
    VOCORE_EXCEPTION_CLASS(VoBufferOverflowException)
public:
    VoBufferOverflowException();                        ///< Empty message.
    VoBufferOverflowException(const VoString& message); ///< The message.
};

/// More taken from a buffer than is in it. Its name() is "Buffer underflow exception".
class VOCORE_EXPORT VoBufferUnderflowException : public VoBufferException
{
    VOCORE_EXCEPTION_CLASS(VoBufferUnderflowException)
public:
    VoBufferUnderflowException();                        ///< Empty message.
    VoBufferUnderflowException(const VoString& message); ///< The message.
};

/// Nesting too deep to go on.
class VOCORE_EXPORT VoStackLimitException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoStackLimitException)
public:
    VoStackLimitException(); ///< "Stack limit reached"
};

/// Clipboard or drag data of a type that is not there.
class VOCORE_EXPORT VoInvalidMimeDataException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidMimeDataException)
public:
    VoInvalidMimeDataException();                     ///< "No MIME data available available"
    VoInvalidMimeDataException(const VoString& type); ///< "No MIME data of given type available: " + type
};

/// The system has no clipboard.
class VOCORE_EXPORT VoNoClipboardException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoNoClipboardException)
public:
    VoNoClipboardException();                        ///< "No clipboard available"
    VoNoClipboardException(const VoString& message); ///< The message.
};

/// A bulk allocation that failed.
class VOCORE_EXPORT VoBadAllocException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoBadAllocException)
public:
    VoBadAllocException(const VoString& detail); ///< "Bad memory allocation: " + detail
};
