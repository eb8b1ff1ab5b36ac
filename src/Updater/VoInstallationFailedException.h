#pragma once

#include <Core/VoException.h>

#include <exception>

/// An installation that did not succeed. The registry of installed packages is as it was before.
class VOCORE_EXPORT VoInstallationFailedException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoInstallationFailedException)
public:
    VoInstallationFailedException();                            ///< "Installation failed"
    VoInstallationFailedException(const VoString& message);     ///< The message.
    VoInstallationFailedException(const VoException& cause);    ///< The message of the cause, without a prefix.
    VoInstallationFailedException(const std::exception& cause); ///< The text of the cause, without a prefix.
};
