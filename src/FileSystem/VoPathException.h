#pragma once

#include <Core/VoException.h>
#include <Core/VoString.h>

/// @file
/// Errors of the rules that paths obey.

/// A path cannot be worked out.
class VOCORE_EXPORT VoPathException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoPathException)
public:
    explicit VoPathException(const VoString& message); ///< The message.
};

/// A text breaks the rules of its kind of path.
class VOCORE_EXPORT VoInvalidPathException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidPathException)
public:
    VoInvalidPathException(const VoString& message, const VoString& path); ///< The message; the path travels with it.

    const VoString& path() const noexcept { return m_path; } ///< The normalised text that was refused.

private:
    VoString m_path;
};

/// A text is no directory path fragment.
class VOCORE_EXPORT VoDirectoryPathException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoDirectoryPathException)
public:
    explicit VoDirectoryPathException(const VoString& path); ///< "Not a valid directory path: " + path
};
