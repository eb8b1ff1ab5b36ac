#pragma once

#include <Core/VoException.h>
#include <Core/VoString.h>

#include <cstddef>
#include <exception>

/// A line of a script of the command shell that failed. Thrown with the failure's own exception as its cause; one
/// within a script that another script sources is the cause of one more.
class VOCORE_EXPORT VoScriptException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoScriptException)
public:
    /// script + ", line " + line + ": " + the message of the cause. The cause must be an exception that is in flight or
    /// was caught.
    VoScriptException(const VoString& script, std::size_t line, const std::exception_ptr& cause);

    const VoString& script() const noexcept { return m_script; }         ///< What the script is called.
    std::size_t line() const noexcept { return m_line; }                 ///< The number of the line, from 1.
    const std::exception_ptr& cause() const noexcept { return m_cause; } ///< Why it failed.

private:
    VoString m_script;
    std::size_t m_line;
    std::exception_ptr m_cause;
};
