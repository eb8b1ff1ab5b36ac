#include <Updater/VoUntrustedReleaseException.h>

#include <Core/VoString.h>

VOCORE_DEFINE_EXCEPTION(VoUntrustedReleaseException, "VoUntrustedReleaseException")

VoUntrustedReleaseException::VoUntrustedReleaseException(Kind kind, const VoString& message)
    : VoValidationException(message)
    , m_kind(kind)
{
}
