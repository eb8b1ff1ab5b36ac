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

VoDownloadException::VoDownloadException(const VoString& message, Kind kind, int status)
    : VoException(message)
    , m_kind(kind)
    , m_status(status)
{
}

VoDownloadException::Kind VoDownloadException::kind() const noexcept
{
    return m_kind;
}

bool VoDownloadException::isTransient() const noexcept
{
    return m_kind == Kind::Transient;
}

bool VoDownloadException::isCancelled() const noexcept
{
    return m_kind == Kind::Cancelled;
}

int VoDownloadException::httpStatus() const noexcept
{
    return m_status;
}

VOCORE_DEFINE_EXCEPTION(VoDownloadException, "VoDownloadException")
