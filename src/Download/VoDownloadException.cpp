#include <Download/VoDownloadException.h>

#include <Core/VoString.h>

VoDownloadException::VoDownloadException()
    : VoException(VoString("Download exception"))
{
}

VoDownloadException::VoDownloadException(const VoString& message)
    : VoException(message)
{
}

VoDownloadException::VoDownloadException(const VoDownloadException& other) = default;
VoDownloadException& VoDownloadException::operator=(const VoDownloadException& other) = default;
VoDownloadException::~VoDownloadException() = default;

const char* VoDownloadException::name() const
{
    return "VoDownloadException";
}
