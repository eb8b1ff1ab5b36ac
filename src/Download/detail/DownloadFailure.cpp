#include <Download/detail/DownloadFailure.h>

#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoUrl.h>

#include <QtCore/QDateTime>
#include <QtCore/QLocale>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkReply>
#include <algorithm>

namespace vo::detail {

namespace {

using Kind = VoDownloadException::Kind;

bool IsTransient(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::TimeoutError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::UnknownNetworkError:
        return true;
    default:
        return false;
    }
}

bool IsTransient(int status)
{
    return status == 429 || (status >= 500 && status <= 599);
}

} // namespace

DownloadFailure LocalFailure(const VoException& cause)
{
    return {Completed(VoDownloadException(cause.message()), cause.subject(), cause.reason()), false, std::nullopt};
}

DownloadFailure NetworkFailure(QNetworkReply& reply, const QUrl& url)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status >= 400)
        return StatusFailure(reply, url);
    QString text = reply.errorString();
    text.replace(url.toString(), url.toString(QUrl::RemoveUserInfo));
    const Kind kind = IsTransient(reply.error()) ? Kind::Transient : Kind::Final;
    return {Completed(VoDownloadException(VoString(text), kind), DisplayText(url), VoString(text)), true, std::nullopt};
}

DownloadFailure StatusFailure(QNetworkReply& reply, const QUrl& url)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const VoString phrase(reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString());
    const VoString number(status);
    const Kind kind = IsTransient(status) ? Kind::Transient : Kind::Final;
    const VoString text =
        "Error transferring " + DisplayText(url) + " - server replied: " + (phrase.isEmpty() ? number : phrase);
    const VoString answer = "the server replied " + number + (phrase.isEmpty() ? VoString() : " " + phrase);
    return {Completed(VoDownloadException(text, kind, status), DisplayText(url), answer), true,
            RetryAfter(reply.rawHeader("Retry-After"), QDateTime::currentDateTimeUtc())};
}

std::optional<VoTimeDuration> RetryAfter(const QByteArray& value, const QDateTime& now)
{
    constexpr qint64 longest = 1000000000; // seconds; what is longer is never waited for anyway
    const QByteArray text = value.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    if (std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        bool fits = false;
        const qint64 seconds = text.toLongLong(&fits);
        return VoTimeDuration(VoSeconds(fits ? std::min(seconds, longest) : longest));
    }
    QDateTime date =
        QLocale::c().toDateTime(QString::fromLatin1(text), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
    if (!date.isValid())
        return std::nullopt;
    date.setTimeSpec(Qt::UTC);
    return VoTimeDuration(VoSeconds(std::clamp(now.secsTo(date), qint64{0}, longest)));
}

VoString DisplayText(const QUrl& url)
{
    return VoString(url.toString(QUrl::RemoveUserInfo));
}

VoString DisplayText(const VoUrl& url)
{
    // Only a text with "@" can name a user; all others stay as they were written.
    return url.toString().contains("@") ? DisplayText(url.toQUrl()) : url.toString();
}

} // namespace vo::detail
