#pragma once

#include <Core/VoException.h>

/// A download that failed, or could not be made.
///
/// It tells what a caller may do about it: a transient failure may be gone when the download is asked for again, a
/// final one will not.
class VOCORE_EXPORT VoDownloadException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoDownloadException)
public:
    /// What the failure means to the caller.
    enum class Kind
    {
        Final,     ///< Asking again will give the same: not found, refused, not allowed, cannot be written.
        Transient, ///< The connection was refused or lost, nothing came for too long, or the server was overloaded.
        Cancelled  ///< The caller wanted it to end.
    };

    VoDownloadException();                        ///< "Download exception"
    VoDownloadException(const VoString& message); ///< The message; a final failure without a status.
    /// The message with all that is known; `status` as for httpStatus().
    VoDownloadException(const VoString& message, Kind kind, int status = 0);

    Kind kind() const noexcept;        ///< What the failure means.
    bool isTransient() const noexcept; ///< Whether asking again may help.
    bool isCancelled() const noexcept; ///< Whether the caller wanted it to end.
    int httpStatus() const noexcept;   ///< The server's answer where that was the failure, such as 404; else 0.

private:
    Kind m_kind = Kind::Final;
    int m_status = 0;
};
