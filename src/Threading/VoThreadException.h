#pragma once

#include <Core/VoException.h>

/// @file
/// Errors of threads.

/// A thread that cannot be started, joined or detached.
class VOCORE_EXPORT VoThreadException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoThreadException)
public:
    VoThreadException();                        ///< Empty message.
    VoThreadException(const VoString& message); ///< The message.
};

/// A detach of a thread that is not running under its handle.
class VOCORE_EXPORT VoDetachThreadException : public VoThreadException
{
    VOCORE_EXCEPTION_CLASS(VoDetachThreadException)
public:
    VoDetachThreadException(); ///< "Invalid thread detach call"
};

/// A join of a thread that is not running under its handle, or of the calling thread itself.
class VOCORE_EXPORT VoJoinThreadException : public VoThreadException
{
    VOCORE_EXCEPTION_CLASS(VoJoinThreadException)
public:
    VoJoinThreadException(); ///< "Invalid thread join call"
};
