#include <ScriptedHttpServer.h>

#include <QtCore/QPointer>
#include <QtCore/QStringList>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>

#if defined(__unix__)
#include <sys/socket.h>
#endif

namespace vo::test {

namespace {

constexpr std::size_t Block = std::size_t{64} * 1024;

// Closing with a linger time of zero sends a reset instead of an orderly end.
void Reset(QTcpSocket& socket)
{
#if defined(__unix__)
    const linger none = {1, 0};
    ::setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof none);
#endif
    socket.abort();
}

std::string Headers(const ScriptedAnswer& answer)
{
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " " + answer.reason + "\r\n";
    for (const auto& [name, value] : answer.headers)
        text += name + ": " + value + "\r\n";
    if (answer.chunked)
        text += "Transfer-Encoding: chunked\r\n";
    else if (answer.withLength)
        text += "Content-Length: " +
                std::to_string(answer.announcedLength >= 0 ? answer.announcedLength
                                                           : static_cast<std::int64_t>(answer.body.size())) +
                "\r\n";
    else
        text += "Connection: close\r\n";
    return text + "\r\n";
}

std::string Chunk(const std::string& bytes)
{
    return QByteArray::number(static_cast<int>(bytes.size()), 16).toStdString() + "\r\n" + bytes + "\r\n";
}

} // namespace

/// Everything that lives in the server's thread, and the tables that all threads use.
class ScriptedHttpServer::Worker : public QObject
{
public:
    // What other threads did under the mutex has happened before the tables go. The framework sees to that as well, but
    // by means that no race detector knows.
    ~Worker() override { const std::lock_guard lock(mutex); }

    void listen()
    {
        m_server = new QTcpServer(this);
        m_server->setMaxPendingConnections(1000);
        m_server->listen(QHostAddress::LocalHost, 0);
        connect(m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* const socket = m_server->nextPendingConnection())
                accept(*socket);
        });
        listening.set_value(m_server->serverPort());
    }

    struct Answers
    {
        std::deque<ScriptedAnswer> get;
        std::deque<ScriptedAnswer> head;
    };

    mutable std::mutex mutex; // guards the next six
    mutable std::condition_variable asked;
    std::map<std::string, Answers> answers;
    std::vector<ScriptedRequest> requests;
    std::size_t connections = 0;
    std::size_t mostConnections = 0;
    std::string before;

    std::size_t count(const std::string& method, const std::string& target) const // under the mutex
    {
        return static_cast<std::size_t>(std::count_if(requests.begin(), requests.end(), [&](const auto& request) {
            return request.method == method && request.target == target;
        }));
    }

    /// Set when the server can be reached.
    std::promise<quint16> listening;

private:
    void accept(QTcpSocket& socket)
    {
        {
            const std::lock_guard lock(mutex);
            mostConnections = std::max(mostConnections, ++connections);
        }
        connect(&socket, &QTcpSocket::readyRead, this, [this, &socket] { read(socket); });
        connect(&socket, &QTcpSocket::disconnected, this, [this, &socket] {
            {
                const std::lock_guard lock(mutex);
                --connections;
            }
            m_pending.erase(&socket);
            socket.deleteLater();
        });
    }

    void read(QTcpSocket& socket)
    {
        std::string& text = m_pending[&socket];
        text += socket.readAll().toStdString();
        const std::size_t end = text.find("\r\n\r\n");
        if (end == std::string::npos)
            return;
        ScriptedRequest request = Parse(text.substr(0, end));
        text.erase(0, end + 4);
        ScriptedAnswer answer = take(request);
        if (request.isOld && answer.chunked)
            answer = answer.withoutLength().inChunks(false);
        const bool bodyless = request.method == "HEAD";
        {
            const std::lock_guard lock(mutex);
            requests.push_back(std::move(request));
        }
        asked.notify_all();
        const QPointer<QTcpSocket> guard(&socket);
        QTimer::singleShot(answer.delay, &socket, [this, guard, answer = std::move(answer), bodyless] {
            if (guard)
                send(*guard, answer, bodyless);
        });
    }

    static ScriptedRequest Parse(const std::string& text)
    {
        const QStringList lines = QString::fromStdString(text).split(QStringLiteral("\r\n"));
        ScriptedRequest request;
        request.method = lines.first().section(QLatin1Char(' '), 0, 0).toStdString();
        request.target = lines.first().section(QLatin1Char(' '), 1, 1).toStdString();
        request.isOld = lines.first().endsWith(QLatin1String("HTTP/1.0"));
        for (const QString& line : lines.mid(1)) {
            const std::string name = line.section(QStringLiteral(": "), 0, 0).toLower().toStdString();
            request.headers[name] = line.section(QStringLiteral(": "), 1).toStdString();
        }
        return request;
    }

    static ScriptedAnswer Next(std::deque<ScriptedAnswer>& queue)
    {
        ScriptedAnswer answer = queue.front();
        if (queue.size() > 1)
            queue.pop_front();
        return answer;
    }

    ScriptedAnswer take(const ScriptedRequest& request)
    {
        const std::lock_guard lock(mutex);
        const auto found = answers.find(request.target);
        if (found == answers.end())
            return ScriptedAnswer::Status(404, "Not Found", "<html>nothing here</html>");
        Answers& target = found->second;
        if (request.method != "HEAD")
            return Next(target.get);
        if (!target.head.empty())
            return Next(target.head);
        ScriptedAnswer header = target.get.front();
        header.fault = ScriptedAnswer::Fault::None;
        header.delay = 0;
        return header;
    }

    std::string textBefore() const
    {
        const std::lock_guard lock(mutex);
        return before;
    }

    void send(QTcpSocket& socket, const ScriptedAnswer& answer, bool bodyless)
    {
        using Fault = ScriptedAnswer::Fault;
        if (answer.fault != Fault::None && answer.faultAt == ScriptedAnswer::BeforeHeaders)
            return fail(socket, answer.fault);
        socket.write(QByteArray::fromStdString(textBefore() + Headers(answer)));
        if (bodyless && answer.fault == Fault::None)
            return;
        if (answer.fault == Fault::Endless)
            return sendEndlessly(socket);
        std::string body = answer.body;
        if (answer.fault != Fault::None)
            body.resize(std::min(body.size(), static_cast<std::size_t>(answer.faultAt)));
        if (answer.trickle != 0)
            return sendSlowly(socket, answer, std::move(body));
        if (answer.chunked && !body.empty()) {
            for (std::size_t i = 0; i < body.size(); i += Block)
                socket.write(QByteArray::fromStdString(Chunk(body.substr(i, Block))));
        } else {
            socket.write(body.data(), static_cast<qint64>(body.size()));
        }
        end(socket, answer);
    }

    void end(QTcpSocket& socket, const ScriptedAnswer& answer)
    {
        if (answer.fault != ScriptedAnswer::Fault::None)
            return fail(socket, answer.fault);
        if (answer.chunked)
            socket.write("0\r\n\r\n");
        else if (!answer.withLength)
            socket.disconnectFromHost();
    }

    void fail(QTcpSocket& socket, ScriptedAnswer::Fault fault)
    {
        if (fault == ScriptedAnswer::Fault::Stall)
            return;
        // What was written must be on its way before a reset, which would drop it.
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(1000)) {
        }
        if (fault == ScriptedAnswer::Fault::Reset)
            Reset(socket);
        else
            socket.disconnectFromHost();
    }

    void sendSlowly(QTcpSocket& socket, const ScriptedAnswer& answer, std::string body)
    {
        auto* const timer = new QTimer(&socket);
        auto sent = std::make_shared<std::size_t>(0);
        connect(timer, &QTimer::timeout, &socket, [this, timer, sent, answer, body = std::move(body), &socket] {
            const std::string piece = body.substr(*sent, answer.trickle);
            *sent += piece.size();
            socket.write(piece.data(), static_cast<qint64>(piece.size()));
            if (*sent < body.size())
                return;
            timer->stop();
            end(socket, answer);
        });
        timer->start(answer.trickleInterval);
    }

    void sendEndlessly(QTcpSocket& socket)
    {
        const auto more = [&socket] {
            while (socket.bytesToWrite() < static_cast<qint64>(Block))
                socket.write(QByteArray(static_cast<int>(Block), 'x'));
        };
        connect(&socket, &QTcpSocket::bytesWritten, &socket, more);
        more();
    }

    QTcpServer* m_server = nullptr;
    std::map<QTcpSocket*, std::string> m_pending; // received, but not yet a whole request
};

struct ScriptedHttpServer::Thread
{
    QThread thread;
    Worker* worker = new Worker;
    quint16 port = 0;
};

namespace {

template <typename Change>
ScriptedAnswer Changed(ScriptedAnswer answer, Change change)
{
    change(answer);
    return answer;
}

} // namespace

ScriptedAnswer ScriptedAnswer::Body(std::string body)
{
    return Status(200, "OK", std::move(body));
}

ScriptedAnswer ScriptedAnswer::Status(int status, const std::string& reason, std::string body)
{
    ScriptedAnswer answer;
    answer.status = status;
    answer.reason = reason;
    answer.body = std::move(body);
    return answer;
}

ScriptedAnswer ScriptedAnswer::Redirect(int status, const std::string& location)
{
    const ScriptedAnswer answer = Status(status, "Elsewhere", "<html>elsewhere</html>");
    return location.empty() ? answer : answer.with("Location", location);
}

ScriptedAnswer ScriptedAnswer::failing(Fault how, std::int64_t at) const
{
    return Changed(*this, [=](ScriptedAnswer& answer) { answer.fault = how, answer.faultAt = at; });
}

ScriptedAnswer ScriptedAnswer::with(const std::string& name, const std::string& value) const
{
    return Changed(*this, [&](ScriptedAnswer& answer) { answer.headers.emplace_back(name, value); });
}

ScriptedAnswer ScriptedAnswer::inChunks(bool on) const
{
    return Changed(*this, [=](ScriptedAnswer& answer) { answer.chunked = on; });
}

ScriptedAnswer ScriptedAnswer::withoutLength() const
{
    return Changed(*this, [](ScriptedAnswer& answer) { answer.withLength = false; });
}

ScriptedAnswer ScriptedAnswer::announcing(std::int64_t length) const
{
    return Changed(*this, [=](ScriptedAnswer& answer) { answer.announcedLength = length; });
}

ScriptedAnswer ScriptedAnswer::trickling(std::size_t bytes, int milliseconds) const
{
    return Changed(*this, [=](ScriptedAnswer& answer) {
        answer.trickle = bytes;
        answer.trickleInterval = milliseconds;
    });
}

ScriptedHttpServer::ScriptedHttpServer()
    : m_thread(std::make_unique<Thread>())
{
    Worker* const worker = m_thread->worker;
    worker->moveToThread(&m_thread->thread);
    QObject::connect(&m_thread->thread, &QThread::finished, worker, &QObject::deleteLater);
    QObject::connect(&m_thread->thread, &QThread::started, worker, [worker] { worker->listen(); });
    std::future<quint16> port = worker->listening.get_future();
    m_thread->thread.start();
    m_thread->port = port.get();
}

ScriptedHttpServer::~ScriptedHttpServer()
{
    m_thread->thread.quit();
    m_thread->thread.wait();
}

std::string ScriptedHttpServer::url(const std::string& target, const std::string& host) const
{
    return "http://" + host + ":" + std::to_string(m_thread->port) + target;
}

void ScriptedHttpServer::get(const std::string& target, std::vector<ScriptedAnswer> answers)
{
    const std::lock_guard lock(m_thread->worker->mutex);
    m_thread->worker->answers[target].get.assign(answers.begin(), answers.end());
}

void ScriptedHttpServer::get(const std::string& target, const ScriptedAnswer& answer)
{
    get(target, std::vector<ScriptedAnswer>{answer});
}

void ScriptedHttpServer::head(const std::string& target, std::vector<ScriptedAnswer> answers)
{
    const std::lock_guard lock(m_thread->worker->mutex);
    m_thread->worker->answers[target].head.assign(answers.begin(), answers.end());
}

void ScriptedHttpServer::sayBefore(const std::string& text)
{
    const std::lock_guard lock(m_thread->worker->mutex);
    m_thread->worker->before = text;
}

void ScriptedHttpServer::clear()
{
    const std::lock_guard lock(m_thread->worker->mutex);
    m_thread->worker->answers.clear();
    m_thread->worker->requests.clear();
}

std::vector<ScriptedRequest> ScriptedHttpServer::requests() const
{
    const std::lock_guard lock(m_thread->worker->mutex);
    return m_thread->worker->requests;
}

std::size_t ScriptedHttpServer::count(const std::string& method, const std::string& target) const
{
    const std::lock_guard lock(m_thread->worker->mutex);
    return m_thread->worker->count(method, target);
}

bool ScriptedHttpServer::waitFor(const std::string& method, const std::string& target, std::size_t times) const
{
    Worker& worker = *m_thread->worker;
    std::unique_lock lock(worker.mutex);
    return worker.asked.wait_for(lock, std::chrono::seconds(20), [&] { return worker.count(method, target) >= times; });
}

std::size_t ScriptedHttpServer::mostConnections() const
{
    const std::lock_guard lock(m_thread->worker->mutex);
    return m_thread->worker->mostConnections;
}

std::string RefusingUrl(const std::string& target)
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return "http://127.0.0.1:" + std::to_string(server.serverPort()) + target; // closed by the time of use
}

} // namespace vo::test
