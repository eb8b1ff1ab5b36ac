#pragma once

#include <Core/VoException.h>

/// A download that failed, or could not be made.
class VOCORE_EXPORT VoDownloadException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoDownloadException)
public:
    VoDownloadException();                        ///< "Download exception"
    VoDownloadException(const VoString& message); ///< The message.
};
