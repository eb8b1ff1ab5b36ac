#include <Download/detail/VoDownload.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/detail/Completed.h>
#include <Download/VoDownloadNotification.h>
#include <Download/detail/VoDownloadManagerImpl.h>
#include <Maths/VoMaths.h>
#include <Subsystem/VoLogging.h>

#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <algorithm>
#include <utility>

using vo::detail::DisplayText;
using vo::detail::DownloadFailure;
using Kind = VoDownloadException::Kind;
using Coding = VoDownloadStreamer::Coding;

namespace {

constexpr int MaximumRedirects = 20;
constexpr qint64 ReadBufferSize = qint64{1024} * 1024; // the network waits when a file is written more slowly
constexpr std::int64_t Tolerance = std::int64_t{1024} * 1024;
constexpr const char* LargerThanAllowed = "Download larger than allowed: ";

vo::logging::Logger& Logger()
{
    static vo::logging::Logger& logger = vo::logging::Logger::Get("download");
    return logger;
}

int StatusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

std::int64_t ContentLength(const QNetworkReply& reply)
{
    bool known = false;
    const qint64 length = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong(&known);
    return known && length >= 0 ? length : -1;
}

bool IsRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 305 || status == 307 || status == 308;
}

// What a server calls a version of a file; nothing that could not be sent back as it came.
VoString TagOf(const QNetworkReply& reply)
{
    constexpr int longest = 256;
    const QByteArray tag = reply.rawHeader("ETag").trimmed();
    const auto isPlain = [](char c) { return c > 0x20 && c < 0x7F; };
    if (tag.size() > longest || !std::all_of(tag.begin(), tag.end(), isPlain))
        return VoString();
    return VoString(tag.toStdString());
}

// The schemes are also the guard against local files, which the network engine would read too.
bool IsSupported(const VoUrl& url)
{
    return url.scheme() == "http" || url.scheme() == "https";
}

// The framework counts connections by scheme, host and port.
QString ConnectionName(const QUrl& url)
{
    return url.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

double Jitter()
{
    constexpr long long steps = 1000;
    return static_cast<double>(VoMaths::RandomInteger(0, steps)) / static_cast<double>(steps);
}

} // namespace

/// One file on its way.
struct VoDownload::File
{
    VoUrl url;
    VoFilePath path;
    VoDownloadSize limit;
    std::unique_ptr<VoSingleFileDownloadMonitor> monitor;

    struct Place
    {
        VoUrl url;
        bool hopeless = false; // it will not give the file however often it is asked
    };
    std::vector<Place> places;
    std::size_t place = 0; // the one being asked
    unsigned attempt = 1;  // rounds over the places

    QUrl current; // where the running request goes; differs from the place after redirects
    int redirects = 0;
    Method method = Method::Head;
    QPointer<QNetworkReply> reply;
    QString connection;               // what the running request holds; empty without one
    bool accepted = false;            // the reply's status and headers are good
    qint64 lastActivity = 0;          // when it was sent, or something came last
    std::int64_t announced = -1;      // by the headers of the body's reply; -1 when they do not say
    Coding headCoding = Coding::None; // in which the size was told
    Coding coding = Coding::None;     // of the body's reply
    bool unchanged = false;           // the caller has it already
    VoString tag;                     // of this version; only where the caller may ask for changes of it
    std::unique_ptr<VoDownloadStreamer> streamer;
    QTimer retryTimer;
};

VoDownload::VoDownload(QObject* parent, const VoUUID& id, const VoDownloadPolicy& policy)
    : QObject(nullptr)
    , m_id(id)
    , m_policy(policy)
{
    if (!qobject_cast<VoDownloadManagerImpl*>(parent))
        throw VoDownloadException("Download must have a parent manager");
    setParent(parent);
    m_clock.start();
    connect(&m_stallTimer, &QTimer::timeout, this, [this] { guarded([this] { checkStall(); }); });
}

VoDownload::~VoDownload()
{
    if (manager())
        manager()->connections().forget(this);
    for (auto& file : m_files)
        release(*file);
}

const VoUUID& VoDownload::id() const noexcept
{
    return m_id;
}

VoDownloadTicketPtr VoDownload::ticket() const
{
    return m_ticket;
}

void VoDownload::setTicket(VoDownloadTicketPtr ticket)
{
    m_ticket = std::move(ticket);
}

VoDownloadManagerImpl* VoDownload::manager() const
{
    return qobject_cast<VoDownloadManagerImpl*>(parent());
}

void VoDownload::setMonitor(std::unique_ptr<VoSingleDownloadMonitor> monitor)
{
    m_monitor = std::move(monitor);
}

VoSingleDownloadMonitor& VoDownload::monitor() const
{
    return *m_monitor;
}

void VoDownload::addFile(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& limit)
{
    auto file = std::make_unique<File>();
    File* const raw = file.get();
    file->url = url;
    file->path = path;
    file->limit = limit.isUnknown() ? m_policy.sizeLimit : limit;
    for (const VoUrl& place : m_policy.locations(url))
        file->places.push_back({place});
    file->monitor = makeFileMonitor(
        url, [this, raw] { beginAttempt(*raw, Method::Head); }, [this, raw] { beginAttempt(*raw, Method::Get); });
    file->retryTimer.setSingleShot(true);
    connect(&file->retryTimer, &QTimer::timeout, this, [this, raw] {
        guarded([raw] {
            if (raw->method == Method::Head)
                raw->monitor->requestHeader();
            else
                raw->monitor->requestDownload();
        });
    });
    m_files.push_back(std::move(file));
}

// What is thrown in a slot would cross the framework, which cannot bear that.
template <typename Action>
void VoDownload::guarded(Action action) noexcept
{
    if (m_ended)
        return;
    try {
        action();
    } catch (const VoDownloadException& e) {
        fail(e);
    } catch (...) {
        fail(VoDownloadException(vo::CurrentExceptionText()));
    }
}

void VoDownload::start()
{
    guarded([this] {
        if (m_files.empty())
            throw VoDownloadException("Empty request");
        for (const auto& file : m_files) {
            for (const File::Place& place : file->places) {
                if (!IsSupported(place.url))
                    throw VoDownloadException("Unsupported URL scheme: " + place.url.scheme());
            }
        }
        if (m_policy.stallTimeout > VoTimeDuration()) {
            const double quarter = m_policy.stallTimeout.seconds() * 1000 / 4;
            m_stallTimer.start(static_cast<int>(std::clamp(quarter, 10.0, 1000.0)));
        }
        m_outstanding = m_files.size();
        m_monitor->requestHeader();
    });
}

void VoDownload::issueHeaders()
{
    for (const auto& file : m_files)
        file->monitor->requestHeader();
}

void VoDownload::issueFiles()
{
    for (const auto& file : m_files)
        file->monitor->requestDownload();
}

void VoDownload::beginAttempt(File& file, Method method)
{
    file.current = file.places[file.place].url.toQUrl();
    file.redirects = 0;
    send(file, method);
}

// The answer to such a request may be that nothing has changed.
bool VoDownload::isAskedForChanges(const File& file) const
{
    return file.method == Method::Get && file.place == 0 && !isGrouped() && !m_policy.knownTag.isEmpty();
}

QNetworkReply* VoDownload::issueRequest(const QUrl& url, Method method, const VoString& knownTag)
{
    VoDownloadManagerImpl* const impl = manager();
    if (!impl)
        throw VoNullPointerException("Download has no manager");
    QNetworkAccessManager* const network = impl->networkAccessManager();
    if (!network)
        throw VoDownloadException("Parent network access manager unavailable");

    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    // Said in any case: otherwise the framework asks for compressed bodies and uncompresses them to any size.
    request.setRawHeader("Accept-Encoding", m_policy.acceptCompressed ? "gzip" : "identity");
    if (!knownTag.isEmpty())
        request.setRawHeader("If-None-Match", QByteArray::fromStdString(knownTag.toStdString()));
    if (m_policy.bypassCaches) {
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
        request.setRawHeader("Cache-Control", "no-cache");
        request.setRawHeader("Pragma", "no-cache");
    }
    QNetworkReply* const reply = method == Method::Head ? network->head(request) : network->get(request);
    if (method == Method::Get)
        reply->setReadBufferSize(ReadBufferSize);
    return reply;
}

void VoDownload::send(File& file, Method method)
{
    file.method = method;
    VoDownloadManagerImpl* const impl = manager();
    if (!impl)
        throw VoNullPointerException("Download has no manager");
    const QString connection = ConnectionName(file.current);
    impl->connections().acquire(connection, this, [this, &file, connection] {
        file.connection = connection;
        guarded([&] { sendNow(file); });
    });
}

void VoDownload::sendNow(File& file)
{
    QNetworkReply* const reply =
        issueRequest(file.current, file.method, isAskedForChanges(file) ? m_policy.knownTag : VoString());
    file.reply = reply;
    file.accepted = false;
    file.announced = -1;
    file.unchanged = false;
    touch(file);
    m_replies[reply] = &file;

    connect(reply, &QNetworkReply::redirected, this,
            [this, reply](const QUrl& target) { guarded([&] { onRedirected(*reply, target); }); });
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] { guarded([&] { onMetaData(*reply); }); });
    if (file.method == Method::Get)
        connect(reply, &QNetworkReply::readyRead, this, [this, reply] { guarded([&] { onReadyRead(*reply); }); });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { guarded([&] { onFinished(*reply); }); });
    if (reply->isFinished()) {
        // Its signals may have passed before they were connected.
        const QPointer<QNetworkReply> ended(reply);
        QMetaObject::invokeMethod(
            this,
            [this, ended] {
                if (ended)
                    guarded([&] { onFinished(*ended); });
            },
            Qt::QueuedConnection);
    }
}

void VoDownload::release(File& file)
{
    file.retryTimer.stop();
    file.streamer.reset();
    const QString connection = std::exchange(file.connection, QString());
    QNetworkReply* const reply = file.reply;
    file.reply.clear();
    if (reply)
        giveUp(*reply);
    // Last: the next request, maybe of another download, starts at once.
    if (!connection.isNull() && manager())
        manager()->connections().release(connection);
}

void VoDownload::giveUp(QNetworkReply& reply)
{
    m_replies.erase(&reply);
    // Aborting emits signals at once; nobody must hear them any more. And it waits until the reply has returned from
    // the signal that may be running: in the middle of one the framework complains that it fails twice.
    disconnect(&reply, nullptr, this, nullptr);
    if (reply.isRunning())
        QMetaObject::invokeMethod(
            &reply, [&reply] { reply.abort(); }, Qt::QueuedConnection);
    reply.deleteLater();
}

VoDownload::File* VoDownload::fileOf(QNetworkReply* reply) const
{
    const auto found = m_replies.find(reply);
    return found == m_replies.end() ? nullptr : found->second;
}

void VoDownload::touch(File& file)
{
    file.lastActivity = m_clock.elapsed();
}

// The framework's own way of following an approved redirect posts requests twice from the second hop on and ends with
// empty bodies. So each hop is a request of its own; and the reply's URL is that of the target already when it tells of
// the redirect, so the URL that was asked is kept here.
void VoDownload::onRedirected(QNetworkReply& reply, const QUrl& target)
{
    File* const file = fileOf(&reply);
    if (!file)
        return;
    touch(*file);
    const VoString hop = "from (" + DisplayText(file->current) + ") to (" + DisplayText(target) + ")";
    Logger().diagnostic("Redirect requested " + hop);

    VoString refusal;
    switch (vo::detail::RedirectDecision(file->current, target, manager()->redirectHosts())) {
    case vo::detail::RedirectVerdict::Approved:
        if (file->redirects >= MaximumRedirects)
            refusal = "Too many redirects";
        break;
    case vo::detail::RedirectVerdict::UnsafeScheme:
        refusal = "Unsafe scheme redirect " + hop;
        break;
    case vo::detail::RedirectVerdict::UnsafeDomain:
        refusal = "Unsafe domain redirect " + hop;
        break;
    }
    if (!refusal.isEmpty()) {
        Logger().error(refusal);
        fileFailed(*file, {VoDownloadException(refusal), true, std::nullopt});
        return;
    }
    release(*file);
    file->current = target;
    ++file->redirects;
    send(*file, file->method);
}

void VoDownload::onMetaData(QNetworkReply& reply)
{
    if (File* const file = fileOf(&reply)) {
        touch(*file);
        accept(*file, reply);
    }
}

// Looks at status and headers before a byte of the body is taken: error pages must not get into the file. False when
// the body is not to be read, either because the file has failed or because a redirect is coming.
bool VoDownload::accept(File& file, QNetworkReply& reply)
{
    if (file.accepted)
        return true;
    const int status = StatusOf(reply);
    if (status == 0 || (IsRedirect(status) && !reply.isFinished()))
        return false;
    if (status == 304 && isAskedForChanges(file)) {
        file.unchanged = true;
        file.accepted = true;
        return true;
    }
    if (status != 200) {
        fileFailed(file, vo::detail::StatusFailure(reply, file.current));
        return false;
    }
    if (!acceptCoding(file, reply))
        return false;
    file.announced = ContentLength(reply);
    if (!withinLimits(file, file.announced))
        return false;
    file.tag = file.place == 0 ? TagOf(reply) : VoString();
    file.accepted = true;
    return true;
}

bool VoDownload::acceptCoding(File& file, QNetworkReply& reply)
{
    const QByteArray name = reply.rawHeader("Content-Encoding").trimmed().toLower();
    const bool isPlain = name.isEmpty() || name == "identity";
    if (!isPlain && !(m_policy.acceptCompressed && (name == "gzip" || name == "x-gzip"))) {
        fileFailed(file, {VoDownloadException("Unsupported content coding: " + VoString(QString::fromLatin1(name))),
                          true, std::nullopt});
        return false;
    }
    const Coding coding = isPlain ? Coding::None : Coding::Gzip;
    if (file.method == Method::Head) {
        file.headCoding = coding;
        return true;
    }
    file.coding = coding;
    // Then the size that was told is not that of what comes.
    if (coding != file.headCoding)
        file.monitor->setTotal(VoDownloadSize::Unknown());
    return true;
}

bool VoDownload::withinLimits(File& file, std::int64_t bytes)
{
    const char* refusal = nullptr;
    const VoDownloadSize expected = file.monitor->total();
    const auto beyond = [bytes](std::int64_t size) {
        return size < bytes - Tolerance && size < (bytes - Tolerance) / 2;
    };
    if (!file.limit.isUnknown() && bytes > file.limit.bytes())
        refusal = LargerThanAllowed;
    else if (file.method == Method::Get && !expected.isUnknown() && beyond(expected.bytes()))
        refusal = "Download larger than announced";
    if (!refusal)
        return true;
    refuseSize(file, refusal);
    return false;
}

void VoDownload::refuseSize(File& file, const char* refusal)
{
    const bool withUrl = refusal[std::char_traits<char>::length(refusal) - 1] == ' ';
    fileFailed(file, {VoDownloadException(withUrl ? refusal + DisplayText(file.current) : VoString(refusal)), true,
                      std::nullopt});
}

void VoDownload::onReadyRead(QNetworkReply& reply)
{
    File* const file = fileOf(&reply);
    if (!file)
        return;
    touch(*file);
    if (accept(*file, reply) && takeBody(*file, reply))
        bytesReceived();
}

// Takes all that has come of the body. False when the file has failed.
bool VoDownload::takeBody(File& file, QNetworkReply& reply)
{
    if (file.unchanged)
        return true;
    try {
        if (!file.streamer)
            file.streamer = std::make_unique<VoDownloadStreamer>(file.path, file.coding, file.limit.bytes());
        std::vector<char>& buffer = manager()->buffer();
        while (const std::int64_t count = file.streamer->take(reply, buffer)) {
            file.monitor->bytesReceived(count);
            if (!withinLimits(file, file.monitor->received()))
                return false;
            if (!file.limit.isUnknown() && file.streamer->written() > file.limit.bytes()) {
                refuseSize(file, LargerThanAllowed);
                return false;
            }
            if (file.streamer->isDamaged()) {
                fileFailed(file,
                           {VoDownloadException("Download damaged: " + DisplayText(file.current), Kind::Transient),
                            true, std::nullopt});
                return false;
            }
        }
        return true;
    } catch (const VoDownloadException& e) {
        fileFailed(file, vo::detail::LocalFailure(e));
        return false;
    }
}

void VoDownload::onFinished(QNetworkReply& reply)
{
    File* const file = fileOf(&reply);
    if (!file)
        return;
    touch(*file);
    if (reply.error() != QNetworkReply::NoError)
        fileFailed(*file, vo::detail::NetworkFailure(reply, file->current));
    else if (!accept(*file, reply))
        return;
    else if (file->method == Method::Head)
        headerReceived(*file, reply);
    else
        bodyReceived(*file, reply);
}

void VoDownload::headerReceived(File& file, QNetworkReply& reply)
{
    const std::int64_t length = ContentLength(reply);
    release(file);
    file.monitor->headerReceived(length < 0 ? VoDownloadSize::Unknown() : VoDownloadSize(length));
    if (--m_outstanding != 0)
        return;
    m_monitor->headersComplete();
    m_outstanding = m_files.size();
    manager()->broadcast(VoSharedPtr<VoDownloadStartedNotification>::Make(m_id));
    if (m_ended)
        return;
    filesStarted();
    m_rate.update(0);
    m_monitor->requestDownload();
}

void VoDownload::bodyReceived(File& file, QNetworkReply& reply)
{
    if (!takeBody(file, reply))
        return;
    if (file.unchanged) {
        fileComplete(file);
        return;
    }
    // The framework notices a body that is shorter than its reply announces. One without an announcement may be cut off
    // unnoticed; then the header's size is all there is to hold it against.
    const std::int64_t received = file.monitor->received();
    const std::int64_t expected = file.announced >= 0 ? file.announced : file.monitor->total().bytes();
    if (received < expected || !file.streamer->isWhole()) {
        fileFailed(file, {VoDownloadException("Download incomplete: " + DisplayText(file.current), Kind::Transient),
                          true, std::nullopt});
        return;
    }
    try {
        file.streamer->finish();
    } catch (const VoDownloadException& e) {
        fileFailed(file, vo::detail::LocalFailure(e));
        return;
    }
    fileComplete(file);
}

void VoDownload::fileComplete(File& file)
{
    release(file);
    file.monitor->fileComplete();
    manager()->callBack([&] {
        if (m_policy.onReceived)
            m_policy.onReceived({VoUrl(DisplayText(file.current)), file.tag, file.monitor->received(), file.unchanged});
    });
    if (m_ended)
        return;
    if (--m_outstanding != 0) {
        bytesReceived();
        return;
    }
    m_monitor->filesComplete();
    filesEnded();
    reportProgress();
    end(nullptr);
}

void VoDownload::checkStall()
{
    const auto timeout = static_cast<qint64>(m_policy.stallTimeout.seconds() * 1000);
    const qint64 now = m_clock.elapsed();
    std::vector<File*> stalled;
    for (const auto& file : m_files) {
        if (file->reply && now - file->lastActivity > timeout)
            stalled.push_back(file.get());
    }
    for (File* const file : stalled) {
        if (m_ended)
            return;
        fileFailed(*file, {VoDownloadException("Download timed out", Kind::Transient), true, std::nullopt});
    }
}

void VoDownload::fileFailed(File& file, const DownloadFailure& failure)
{
    release(file);
    file.monitor->discardReceived();
    file.monitor->endPhase();
    if (failure.elsewhere) {
        if (failure.exception.kind() == Kind::Final)
            file.places[file.place].hopeless = true;
        if (tryElsewhere(file, failure.exception) || tryLater(file, failure))
            return;
    }
    if (file.method == Method::Get) {
        fail(failure.exception);
        return;
    }
    const VoString text = "Header request failed: " + failure.exception.message();
    Logger().error(text);
    fail(vo::detail::Completed(VoDownloadException(text, failure.exception.kind(), failure.exception.httpStatus()),
                               failure.exception.subject(), failure.exception.reason()));
}

// Asks the next place of this round at once.
bool VoDownload::tryElsewhere(File& file, const VoDownloadException& reason)
{
    for (std::size_t next = file.place + 1; next < file.places.size(); ++next) {
        if (file.places[next].hopeless)
            continue;
        file.place = next;
        announce(file, VoTimeDuration(), file.attempt, reason.message());
        if (!m_ended)
            file.retryTimer.start(0);
        return true;
    }
    return false;
}

// Begins a new round over the places, after a wait.
bool VoDownload::tryLater(File& file, const DownloadFailure& failure)
{
    const auto first =
        std::find_if(file.places.begin(), file.places.end(), [](const File::Place& place) { return !place.hopeless; });
    if (first == file.places.end() || file.attempt > m_policy.retries)
        return false;
    VoTimeDuration delay = m_policy.delayBefore(file.attempt, Jitter());
    if (failure.retryAfter) {
        if (*failure.retryAfter > m_policy.longestRetryAfter)
            return false;
        delay = std::max(delay, *failure.retryAfter);
    }
    ++file.attempt;
    file.place = static_cast<std::size_t>(first - file.places.begin());
    announce(file, delay, file.attempt, failure.exception.message());
    if (!m_ended)
        file.retryTimer.start(static_cast<int>(std::min(delay.seconds() * 1000, 1e9)));
    return true;
}

void VoDownload::announce(const File& file, VoTimeDuration delay, unsigned attempt, const VoString& reason)
{
    const VoString url = DisplayText(file.places[file.place].url);
    Logger().information("Retrying download: " + m_id.toString() + " - " + url + " (attempt " + VoString(attempt) +
                         " in " + delay.toString() + "): " + reason);
    manager()->callBack([&] {
        if (m_policy.onRetry)
            m_policy.onRetry({VoUrl(url), attempt, delay, reason});
    });
}

void VoDownload::filesStarted() {}

void VoDownload::filesEnded() {}

void VoDownload::reportProgress()
{
    // A file that is fetched anew takes its bytes back; what was reported once is not.
    m_reported = std::max(m_reported, m_monitor->received());
    VoDownloadSize total = m_monitor->total();
    if (!total.isUnknown() && total.bytes() < m_reported)
        total = m_reported;
    m_rate.update(m_reported);
    manager()->broadcast(
        VoSharedPtr<VoDownloadProgressNotification>::Make(VoDownloadSize(m_reported), total, m_rate.value(), m_id));
}

void VoDownload::cancel()
{
    fail(VoDownloadException("Download cancelled", Kind::Cancelled));
}

void VoDownload::fail(const VoDownloadException& failure)
{
    end(&failure);
}

void VoDownload::end(const VoDownloadException* failure)
{
    if (std::exchange(m_ended, true))
        return;
    m_stallTimer.stop();
    filesEnded();
    VoDownloadManagerImpl* const impl = manager();
    if (impl)
        impl->connections().forget(this);
    for (const auto& file : m_files)
        release(*file);
    if (impl)
        impl->ended(*this, failure);
    deleteLater();
}
