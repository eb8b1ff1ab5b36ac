#include <Application/detail/SingleInstance.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Subsystem/VoLogging.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QStandardPaths>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>

#include <algorithm>
#include <utility>

namespace vo::detail {

namespace {

constexpr char Letters[] = "VOI1";
constexpr char Taken = 'T';
constexpr int LongestTransfer = 10000; // milliseconds; who needs longer is no other start
constexpr unsigned long Pause = 50;    // milliseconds between two tries

std::size_t AnnouncedLength(const std::string& bytes)
{
    std::size_t length = 0;
    for (std::size_t i = 4; i < MessageHeader; ++i)
        length = length << 8 | static_cast<unsigned char>(bytes[i]);
    return length;
}

void Refuse()
{
    throw VoValidationException("Invalid message of another start");
}

// The socket of a user's application. In the directory that only the user may enter where sockets are files; elsewhere
// the name carries the user's directory, and the system keeps others out.
QString SocketName(const VoDirectoryPath& directory)
{
    const std::string place = std::filesystem::absolute(ToNative(directory)).generic_string();
    QString name =
        QStringLiteral("vo-") +
        QString::fromLatin1(
            QCryptographicHash::hash(QByteArray::fromStdString(place), QCryptographicHash::Sha3_256).toHex().left(24));
    if constexpr (std::filesystem::path::preferred_separator != '/')
        return name;
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (runtime.isEmpty())
        throw VoInvalidCallException("The user has no directory for sockets");
    return runtime + QLatin1Char('/') + name;
}

bool HandOver(const QString& name, const std::string& message, const QDeadlineTimer& end)
{
    const auto left = [&end] { return static_cast<int>(std::max<qint64>(1, end.remainingTime())); };
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(left()))
        return false;
    socket.write(message.data(), static_cast<qint64>(message.size()));
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(left()))
            return false;
    }
    char answer = 0;
    return (socket.bytesAvailable() > 0 || socket.waitForReadyRead(left())) && socket.read(&answer, 1) == 1 &&
           answer == Taken;
}

// One transfer of another start. It ends with its socket.
void Receive(QLocalSocket& socket, const std::shared_ptr<std::string>& bytes, const SingleInstance::Callback& callback)
try {
    bytes->append(
        socket.read(static_cast<qint64>(LargestMessage + MessageHeader + 1) - static_cast<qint64>(bytes->size()))
            .toStdString());
    const std::optional<std::vector<std::string>> texts = TextsOfMessage(*bytes);
    if (!texts)
        return;
    socket.disconnect();
    QObject::connect(&socket, &QLocalSocket::disconnected, &socket, &QObject::deleteLater);
    socket.write(&Taken, 1);
    socket.flush();
    socket.disconnectFromServer();
    callback(*texts);
} catch (...) {
    vo::logging::Logger::Get("application").warning("Other start: " + vo::CurrentExceptionText());
    socket.disconnect();
    socket.abort();
    socket.deleteLater();
}

void Accept(QLocalServer& server, const SingleInstance::Callback& callback)
{
    while (QLocalSocket* const socket = server.nextPendingConnection()) {
        const auto bytes = std::make_shared<std::string>();
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QLocalSocket::readyRead, socket,
                         [socket, bytes, callback] { Receive(*socket, bytes, callback); });
        QTimer::singleShot(LongestTransfer, socket, [socket] { socket->abort(); });
    }
}

} // namespace

std::string InstanceMessage(const std::vector<std::string>& texts)
{
    std::string body;
    for (const std::string& text : texts)
        body += text + '\0';
    if (body.size() > LargestMessage)
        throw VoInvalidParameterException("Command line too long to hand over");
    std::string message = Letters;
    for (int shift = 24; shift >= 0; shift -= 8)
        message += static_cast<char>(body.size() >> shift & 0xff);
    return message + body;
}

std::optional<std::vector<std::string>> TextsOfMessage(const std::string& bytes)
{
    if (bytes.compare(0, 4, Letters, std::min<std::size_t>(4, bytes.size())) != 0)
        Refuse();
    if (bytes.size() < MessageHeader)
        return std::nullopt;
    const std::size_t length = AnnouncedLength(bytes);
    if (length == 0 || length > LargestMessage || bytes.size() > MessageHeader + length)
        Refuse();
    if (bytes.size() < MessageHeader + length)
        return std::nullopt;
    if (bytes.back() != '\0')
        Refuse();
    std::vector<std::string> texts;
    for (std::size_t from = MessageHeader; from < bytes.size();) {
        const std::size_t to = bytes.find('\0', from);
        texts.push_back(bytes.substr(from, to - from));
        from = to + 1;
    }
    return texts;
}

struct SingleInstance::Private
{
    VoDirectoryPath directory;
    Callback callback;
    std::unique_ptr<VoFileLock> lock;
    QLocalServer server; // closed before the lock is let go of
};

SingleInstance::SingleInstance(const VoDirectoryPath& directory, Callback callback)
    : m_private(std::make_unique<Private>())
{
    m_private->directory = directory;
    m_private->callback = std::move(callback);
}

SingleInstance::~SingleInstance() = default;

std::optional<bool> SingleInstance::claim(const std::vector<std::string>& texts, const VoTimeDuration& patience)
{
    if (m_private->lock)
        return true;
    const std::string message = InstanceMessage(texts);
    VoFileSystem::CreateDirectory(m_private->directory, true);
    const QDeadlineTimer end(patience.toChrono());
    do {
        auto lock = std::make_unique<VoFileLock>(m_private->directory.file("instance.lock"));
        if (lock->isHeld()) {
            listen();
            m_private->lock = std::move(lock);
            return true;
        }
        if (HandOver(SocketName(m_private->directory), message, end))
            return false;
        QThread::msleep(Pause); // the first may just be starting, or ending
    } while (!end.hasExpired());
    return std::nullopt;
}

// Who calls has the lock, so that a socket that is there is one that a crash has left.
void SingleInstance::listen()
{
    const QString name = SocketName(m_private->directory);
    QLocalServer::removeServer(name);
    m_private->server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_private->server.listen(name))
        throw VoInvalidCallException("Cannot listen for other starts: " + VoString(m_private->server.errorString()));
    QObject::connect(&m_private->server, &QLocalServer::newConnection, &m_private->server,
                     [this] { Accept(m_private->server, m_private->callback); });
}

} // namespace vo::detail
