#include <Download/VoDownloadException.h>

#include <Core/VoString.h>

VoDownloadException::VoDownloadException()
    : VoException("Download exception")
{
}

VoDownloadException::VoDownloadException(const VoString& message)
    : VoException(message)
{
}

VOCORE_DEFINE_EXCEPTION(VoDownloadException, "VoDownloadException")
