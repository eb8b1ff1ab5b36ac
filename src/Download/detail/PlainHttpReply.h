#pragma once

#include <QtCore/QByteArray>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QSslSocket>

namespace vo::detail {

/// The answer to a request that is made by HTTP/1.0 over a connection of its own.
///
/// The framework takes an interim answer (1xx) other than 100 for the answer itself and ends the request. No server may
/// send one to a client of HTTP/1.0 (RFC 9110, 15.2), nor a body in chunks; and one that sends interim answers all the
/// same is read past them here. Proxies and certificates are those of the framework's own requests; of authentication
/// there is only what the URL names, by the Basic scheme. Redirects are told and not followed.
///
/// Lives on the thread that makes it, which runs an event loop. Errors are told as the framework's replies do; an answer
/// of 400 or more is told by its status alone.
class PlainHttpReply final : public QNetworkReply
{
public:
    /// Connects at once. `operation` is HEAD or GET.
    PlainHttpReply(const QNetworkRequest& request, QNetworkAccessManager::Operation operation);

    void abort() override;
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;
    void setReadBufferSize(qint64 size) override;

protected:
    qint64 readData(char* data, qint64 most) override;

private:
    void connectToServer();
    void sendRequest();
    void receive();
    bool readHead(); // false while its end is still to come, and when it has failed
    void takeStatus(const QByteArray& line);
    bool takeField(const QByteArray& line);
    void headEnded();
    void tellRedirect();
    void endWithBody();
    void disconnected();
    void socketFailed(QAbstractSocket::SocketError error);
    void fail(NetworkError error, const QString& text);
    void end();

    enum class Phase
    {
        Status,
        Fields,
        Body
    };

    QSslSocket m_socket;
    Phase m_phase = Phase::Status;
    qint64 m_headBytes = 0;
    qint64 m_left = -1; // bytes of the body that were not read yet; negative where the connection's end ends it
};

} // namespace vo::detail
