#pragma once

#include <Core/VoException.h>

#include <exception>

/// An installation that did not succeed. The registry of installed packages is as it was before.
///
/// What it is about and the system's reason are those of the cause.
class VOCORE_EXPORT VoInstallationFailedException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInstallationFailedException)
public:
    VoInstallationFailedException();                        ///< "Installation failed"
    VoInstallationFailedException(const VoString& message); ///< The message.
    /// @{ The text of the cause, without a prefix; to be called in a handler of the cause, which cause() then gives.
    VoInstallationFailedException(const VoException& cause);
    VoInstallationFailedException(const std::exception& cause);
    /// @}
    /// The message, and the exception that made the installation fail.
    VoInstallationFailedException(const VoString& message, std::exception_ptr cause);

    /// The exception that made the installation fail, to be thrown again by those who decide by its class; null when
    /// none is known.
    const std::exception_ptr& cause() const noexcept;
    /// The file that the cause is about; null when it is about none, or nobody knew.
    VoFilePath path() const;

private:
    std::exception_ptr m_cause;
};
