#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Download/VoDownloadException.h>
#include <Time/VoTimeDuration.h>

#include <optional>

class QDateTime;
class QNetworkReply;
class QUrl;

namespace vo::detail {

/// Why a file did not come. The one place where errors of the network and answers of servers get their meaning.
struct DownloadFailure
{
    VoDownloadException exception;            ///< What the caller will see.
    bool elsewhere = true;                    ///< Another place may have the file: not so when the fault is here.
    std::optional<VoTimeDuration> retryAfter; ///< What the server asks for.
};

/// A failure that another place would give as well.
DownloadFailure LocalFailure(const VoException& cause);
/// The failure of a reply that ended with a network error.
DownloadFailure NetworkFailure(QNetworkReply& reply, const QUrl& url);
/// The failure of a reply whose status is not 200.
DownloadFailure StatusFailure(QNetworkReply& reply, const QUrl& url);

/// The time that the value of a "Retry-After" header asks for: seconds, or a date; nothing when it is neither.
VOCORE_PRIVATE_EXPORT std::optional<VoTimeDuration> RetryAfter(const QByteArray& value, const QDateTime& now);

/// A URL for logs and messages: without user name and password.
/// @{
VoString DisplayText(const QUrl& url);
VoString DisplayText(const VoUrl& url);
/// @}

} // namespace vo::detail
