#include <Updater/VoInstallationFailedException.h>

#include <Core/VoString.h>

VOCORE_DEFINE_EXCEPTION(VoInstallationFailedException, "VoInstallationFailedException")

VoInstallationFailedException::VoInstallationFailedException()
    : VoException(VoString("Installation failed"))
{
}

VoInstallationFailedException::VoInstallationFailedException(const VoString& message)
    : VoException(message)
{
}

VoInstallationFailedException::VoInstallationFailedException(const VoException& cause)
    : VoException(cause.message())
{
}

VoInstallationFailedException::VoInstallationFailedException(const std::exception& cause)
    : VoException(VoString(cause.what()))
{
}
