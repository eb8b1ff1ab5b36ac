#include <Updater/VoStagedReleaseException.h>

#include <Core/VoString.h>

VOCORE_DEFINE_EXCEPTION(VoStagedReleaseException, "VoStagedReleaseException")

VoStagedReleaseException::VoStagedReleaseException(const VoString& message)
    : VoException(message)
{
}
