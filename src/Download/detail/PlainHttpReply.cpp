#include <Download/detail/PlainHttpReply.h>

#include <Download/detail/DownloadFile.h>

#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkRequest>
#include <algorithm>

namespace vo::detail {

namespace {

constexpr qint64 LongestHead = 256 * 1024; // of all interim answers and the last one together
constexpr qint64 SocketBufferSize = 64 * 1024;

QNetworkReply::NetworkError ErrorOf(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return QNetworkReply::ConnectionRefusedError;
    case QAbstractSocket::RemoteHostClosedError:
        return QNetworkReply::RemoteHostClosedError;
    case QAbstractSocket::HostNotFoundError:
        return QNetworkReply::HostNotFoundError;
    case QAbstractSocket::SocketTimeoutError:
        return QNetworkReply::TimeoutError;
    case QAbstractSocket::SslHandshakeFailedError:
        return QNetworkReply::SslHandshakeFailedError;
    case QAbstractSocket::ProxyAuthenticationRequiredError:
        return QNetworkReply::ProxyAuthenticationRequiredError;
    case QAbstractSocket::ProxyConnectionRefusedError:
        return QNetworkReply::ProxyConnectionRefusedError;
    case QAbstractSocket::ProxyConnectionClosedError:
        return QNetworkReply::ProxyConnectionClosedError;
    case QAbstractSocket::ProxyConnectionTimeoutError:
        return QNetworkReply::ProxyTimeoutError;
    default:
        return QNetworkReply::UnknownNetworkError;
    }
}

// The proxy of such a URL, asked to open a way through.
QNetworkProxy ProxyFor(const QUrl& url)
{
    QNetworkProxy proxy = QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url)).value(0, QNetworkProxy::NoProxy);
    if (proxy.type() == QNetworkProxy::HttpCachingProxy)
        proxy.setType(QNetworkProxy::HttpProxy);
    return proxy;
}

QByteArray HostField(const QUrl& url)
{
    const QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
    const QByteArray name = host.contains(':') ? '[' + host + ']' : host;
    return url.port() < 0 ? name : name + ':' + QByteArray::number(url.port());
}

QByteArray Target(const QUrl& url)
{
    const QUrl::FormattingOptions parts = QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment;
    const QByteArray target = url.toEncoded(parts);
    return target.startsWith('/') ? target : '/' + target;
}

QByteArray Credentials(const QUrl& url)
{
    return (url.userName(QUrl::FullyDecoded) + QLatin1Char(':') + url.password(QUrl::FullyDecoded)).toUtf8();
}

QByteArray Head(const QNetworkRequest& request, QNetworkAccessManager::Operation operation)
{
    const QUrl url = request.url();
    const char* const method = operation == QNetworkAccessManager::HeadOperation ? "HEAD " : "GET ";
    QByteArray head = method + Target(url) + " HTTP/1.0\r\nHost: " + HostField(url) + "\r\nConnection: close\r\n";
    // What the framework says of itself: servers that look at it treat both kinds of requests alike.
    if (!request.hasRawHeader("User-Agent"))
        head += "User-Agent: Mozilla/5.0\r\n";
    if (!url.userInfo().isEmpty() && !request.hasRawHeader("Authorization"))
        head += "Authorization: Basic " + Credentials(url).toBase64() + "\r\n";
    for (const QByteArray& name : request.rawHeaderList())
        head += name + ": " + request.rawHeader(name) + "\r\n";
    return head + "\r\n";
}

} // namespace

PlainHttpReply::PlainHttpReply(const QNetworkRequest& request, QNetworkAccessManager::Operation operation)
{
    setRequest(request);
    setUrl(request.url());
    setOperation(operation);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    m_socket.setReadBufferSize(SocketBufferSize);
    m_socket.setProxy(ProxyFor(request.url()));
    connect(&m_socket, &QSslSocket::readyRead, this, &PlainHttpReply::receive);
    connect(&m_socket, &QSslSocket::disconnected, this, &PlainHttpReply::disconnected);
    connect(&m_socket, &QSslSocket::errorOccurred, this, &PlainHttpReply::socketFailed);
    // Later: whoever makes a reply hears its signals only then.
    QMetaObject::invokeMethod(
        this, [this] { connectToServer(); }, Qt::QueuedConnection);
}

void PlainHttpReply::connectToServer()
{
    if (isFinished())
        return;
    const QUrl url = request().url();
    if (url.scheme() == QLatin1String("https")) {
        connect(&m_socket, &QSslSocket::encrypted, this, &PlainHttpReply::sendRequest);
        m_socket.connectToHostEncrypted(url.host(), static_cast<quint16>(url.port(443)));
    } else {
        connect(&m_socket, &QSslSocket::connected, this, &PlainHttpReply::sendRequest);
        m_socket.connectToHost(url.host(), static_cast<quint16>(url.port(80)));
    }
}

void PlainHttpReply::sendRequest()
{
    m_socket.write(Head(request(), operation()));
}

void PlainHttpReply::receive()
{
    if (isFinished() || (m_phase != Phase::Body && !readHead()))
        return;
    if (m_left >= 0 && m_socket.bytesAvailable() >= m_left)
        endWithBody();
    else if (m_socket.bytesAvailable() > 0)
        Q_EMIT readyRead();
}

bool PlainHttpReply::readHead()
{
    while (m_phase != Phase::Body && m_socket.canReadLine()) {
        const QByteArray line = m_socket.readLine();
        m_headBytes += line.size();
        const QByteArray text = line.trimmed();
        if (m_headBytes > LongestHead || (m_phase == Phase::Fields && !text.isEmpty() && !takeField(line))) {
            fail(ProtocolFailure, QStringLiteral("Invalid HTTP header"));
            return false;
        }
        if (m_phase == Phase::Status)
            takeStatus(text);
        else if (text.isEmpty())
            headEnded();
        if (isFinished())
            return false;
    }
    // A line that fills the whole buffer would never be read.
    if (m_phase != Phase::Body && m_socket.bytesAvailable() >= SocketBufferSize)
        fail(ProtocolFailure, QStringLiteral("Invalid HTTP header"));
    return m_phase == Phase::Body && !isFinished();
}

void PlainHttpReply::takeStatus(const QByteArray& line)
{
    const auto space = line.indexOf(' ');
    bool isNumber = false;
    const int status = line.mid(space + 1, 3).toInt(&isNumber);
    if (!line.startsWith("HTTP/1.") || !isNumber || status < 100) {
        fail(ProtocolFailure, QStringLiteral("Invalid HTTP status line"));
        return;
    }
    setAttribute(QNetworkRequest::HttpStatusCodeAttribute, status);
    setAttribute(QNetworkRequest::HttpReasonPhraseAttribute, line.mid(space + 5));
    m_phase = Phase::Fields;
}

bool PlainHttpReply::takeField(const QByteArray& line)
{
    const auto colon = line.indexOf(':');
    const bool isContinued = line.startsWith(' ') || line.startsWith('\t');
    if (colon <= 0 || isContinued)
        return false;
    if (attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() < 200)
        return true; // of an interim answer: hints, not said of the file
    const QByteArray name = line.left(colon).trimmed();
    const QByteArray value = line.mid(colon + 1).trimmed();
    const bool isLength = name.compare("Content-Length", Qt::CaseInsensitive) == 0;
    // Two lengths leave open where the body ends.
    if (isLength && hasRawHeader(name) && rawHeader(name) != value)
        return false;
    setRawHeader(name, hasRawHeader(name) && !isLength ? rawHeader(name) + ", " + value : value);
    return true;
}

void PlainHttpReply::headEnded()
{
    const int status = attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status < 200) {
        m_phase = Phase::Status;
        return;
    }
    if (hasRawHeader("Transfer-Encoding")) {
        fail(ProtocolFailure, QStringLiteral("Unexpected transfer coding"));
        return;
    }
    m_phase = Phase::Body;
    if (hasRawHeader("Content-Length")) {
        bool isNumber = false;
        m_left = rawHeader("Content-Length").toLongLong(&isNumber);
        if (!isNumber || m_left < 0) {
            fail(ProtocolFailure, QStringLiteral("Invalid HTTP header"));
            return;
        }
    }
    if (operation() == QNetworkAccessManager::HeadOperation || status == 204 || status == 304)
        m_left = 0;
    if (IsRedirect(status))
        tellRedirect();
    if (isFinished())
        return;
    Q_EMIT metaDataChanged();
    if (m_left == 0)
        endWithBody();
}

void PlainHttpReply::tellRedirect()
{
    const QByteArray location = rawHeader("Location");
    const QUrl target = url().resolved(QUrl::fromEncoded(location));
    if (location.isEmpty() || !(target.scheme() == QLatin1String("http") || target.scheme() == QLatin1String("https")))
        fail(ProtocolUnknownError, QStringLiteral("Unknown protocol specified"));
    else
        Q_EMIT redirected(target);
}

// All of the body has come, though it need not have been read yet.
void PlainHttpReply::endWithBody()
{
    if (isFinished())
        return;
    if (m_socket.bytesAvailable() > 0)
        Q_EMIT readyRead();
    end();
}

void PlainHttpReply::disconnected()
{
    receive();
    if (isFinished())
        return;
    if (m_phase == Phase::Body && m_left < 0)
        endWithBody();
    else
        fail(RemoteHostClosedError, QStringLiteral("Connection closed"));
}

void PlainHttpReply::socketFailed(QAbstractSocket::SocketError error)
{
    // How the end of the connection is to be taken, its own signal tells.
    if (error != QAbstractSocket::RemoteHostClosedError)
        fail(ErrorOf(error), m_socket.errorString());
}

void PlainHttpReply::fail(NetworkError error, const QString& text)
{
    if (isFinished())
        return;
    setError(error, text);
    Q_EMIT errorOccurred(error);
    end();
}

void PlainHttpReply::end()
{
    if (isFinished())
        return;
    setFinished(true);
    Q_EMIT finished();
}

void PlainHttpReply::abort()
{
    fail(OperationCanceledError, QStringLiteral("Operation canceled"));
    m_socket.abort();
}

qint64 PlainHttpReply::bytesAvailable() const
{
    if (m_phase != Phase::Body)
        return QNetworkReply::bytesAvailable();
    const qint64 come = m_socket.bytesAvailable();
    return QNetworkReply::bytesAvailable() + (m_left < 0 ? come : std::min(come, m_left));
}

void PlainHttpReply::setReadBufferSize(qint64 size)
{
    QNetworkReply::setReadBufferSize(size);
    m_socket.setReadBufferSize(size > 0 ? std::max(size, SocketBufferSize) : size);
}

qint64 PlainHttpReply::readData(char* data, qint64 most)
{
    if (m_phase != Phase::Body)
        return 0;
    const qint64 count = m_socket.read(data, m_left < 0 ? most : std::min(most, m_left));
    if (count > 0 && m_left > 0)
        m_left -= count;
    if (count <= 0 && isFinished())
        return -1;
    // What has come meanwhile may be the last of it; not told inside this call, whose caller reads on.
    if (!isFinished() && m_left >= 0 && m_socket.bytesAvailable() >= m_left)
        QMetaObject::invokeMethod(
            this, [this] { endWithBody(); }, Qt::QueuedConnection);
    return std::max<qint64>(count, 0);
}

} // namespace vo::detail
