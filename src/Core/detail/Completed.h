#pragma once

#include <Core/VoException.h>
#include <Core/VoString.h>

#include <system_error>
#include <utility>

/// @file
/// What a failure is about and why, for messages that have no place for it.

namespace vo::detail {

/// The exception, to be thrown, with what it is about and the system's words.
template <typename Exception>
Exception Completed(Exception exception, const VoString& subject, const VoString& reason = VoString())
{
    exception.complete(subject, reason);
    return exception;
}

/// The exception of a class that has a path of its own, with the system's words.
template <typename Exception>
Exception Because(const std::error_code& error, Exception exception)
{
    return Completed(std::move(exception), VoString(), error ? VoString(error.message()) : VoString());
}

/// Does `work`; the library's exceptions that it throws are about `subject` unless they know better.
template <typename Work>
auto About(const VoString& subject, Work work)
{
    try {
        return work();
    } catch (VoException& exception) {
        exception.complete(subject, VoString());
        throw;
    }
}

} // namespace vo::detail
