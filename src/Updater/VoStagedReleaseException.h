#pragma once

#include <Core/VoException.h>

/// A staged release that cannot be committed any more: what is installed has changed since, or what was staged is
/// damaged. Staging it again mends that. Nothing of the installation was changed.
class VOCORE_EXPORT VoStagedReleaseException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoStagedReleaseException)
public:
    VoStagedReleaseException(const VoString& message); ///< The message.
};
