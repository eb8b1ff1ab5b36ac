#include <Download/detail/VoDownload.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/detail/Completed.h>
#include <Download/VoDownloadNotification.h>
#include <Download/detail/DownloadLog.h>
#include <Download/detail/PlainHttpReply.h>
#include <Download/detail/SpeedFloor.h>
#include <Download/detail/VoDownloadManagerImpl.h>

#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <algorithm>
#include <limits>
#include <utility>

using vo::detail::DisplayText;
using vo::detail::DownloadFailure;
using vo::detail::DownloadFile;
using vo::detail::DownloadLog;
using vo::detail::SpeedFloor;
using Kind = VoDownloadException::Kind;

namespace {

constexpr qint64 ReadBufferSize = qint64{1024} * 1024; // the network waits when a file is written more slowly

qint64 Milliseconds(const VoTimeDuration& duration)
{
    return static_cast<qint64>(duration.seconds() * 1000);
}

// How often the speed is looked at: often enough for the shorter of the limits; 0 without any.
int SpeedInterval(const VoDownloadPolicy& policy)
{
    qint64 shortest = std::numeric_limits<qint64>::max();
    if (policy.stallTimeout > VoTimeDuration())
        shortest = Milliseconds(policy.stallTimeout);
    if (SpeedFloor(policy.lowestRate, policy.lowestRateTime).isOn())
        shortest = std::min(shortest, Milliseconds(policy.lowestRateTime));
    if (shortest == std::numeric_limits<qint64>::max())
        return 0;
    return static_cast<int>(std::clamp(shortest / 4, qint64{10}, qint64{1000}));
}

constexpr int ResumeInterval = 100; // milliseconds; shorter than the burst that the limit allows

// The framework counts connections by scheme, host and port.
QString ConnectionName(const QUrl& url)
{
    return url.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

} // namespace

/// One file on its way: the request that runs for it, if any, and the wait before the next one.
struct VoDownload::Transfer
{
    Transfer(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& limit, const VoDownloadPolicy& policy,
             bool isAlone)
        : file(url, path, limit, policy, isAlone)
        , floor(policy.lowestRate, policy.lowestRateTime)
    {
    }

    DownloadFile file;
    QPointer<QNetworkReply> reply;
    QString connection;      // what the running request holds; empty without one
    qint64 lastActivity = 0; // when it was sent, or something came last
    SpeedFloor floor;
    bool isPaused = false;
    QTimer retryTimer;
};

VoDownload::VoDownload(QObject* parent, const VoUUID& id, const VoDownloadPolicy& policy)
    : QObject(nullptr)
    , m_id(id)
    , m_policy(policy)
    , m_limit(policy.highestRate)
{
    if (!qobject_cast<VoDownloadManagerImpl*>(parent))
        throw VoDownloadException("Download must have a parent manager");
    setParent(parent);
    m_clock.start();
    connect(&m_resumeTimer, &QTimer::timeout, this, [this] { guarded([this] { resume(); }); });
    m_resumeTimer.setSingleShot(true);
    connect(&m_speedTimer, &QTimer::timeout, this, [this] { guarded([this] { checkSpeed(); }); });
}

VoDownload::~VoDownload()
{
    if (manager())
        manager()->connections().forget(this);
    for (auto& transfer : m_transfers)
        release(*transfer);
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
    auto transfer = std::make_unique<Transfer>(url, path, limit, m_policy, !isGrouped());
    Transfer* const raw = transfer.get();
    transfer->file.setMonitor(makeFileMonitor(
        url, [this, raw] { beginAttempt(*raw, Method::Head); }, [this, raw] { beginAttempt(*raw, Method::Get); }));
    transfer->retryTimer.setSingleShot(true);
    connect(&transfer->retryTimer, &QTimer::timeout, this, [this, raw] {
        guarded([raw] {
            if (raw->file.method() == Method::Head)
                raw->file.monitor().requestHeader();
            else
                raw->file.monitor().requestDownload();
        });
    });
    m_transfers.push_back(std::move(transfer));
}

// The headers of all files are asked for, and when the last has come, all bodies: `m_outstanding` counts the files that
// the phase still waits for. A failed file is asked for again within its phase. The end comes once, by end(), whatever
// comes first; signals, timers and queued calls that arrive after it find `m_ended` here and do nothing.
//
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
        if (m_transfers.empty())
            throw VoDownloadException("Empty request");
        for (const auto& transfer : m_transfers) {
            if (const VoUrl* place = transfer->file.unsupportedPlace())
                throw VoDownloadException("Unsupported URL scheme: " + place->scheme());
        }
        if (const int interval = SpeedInterval(m_policy))
            m_speedTimer.start(interval);
        m_outstanding = m_transfers.size();
        m_monitor->requestHeader();
    });
}

void VoDownload::issueHeaders()
{
    for (const auto& transfer : m_transfers)
        transfer->file.monitor().requestHeader();
}

void VoDownload::issueFiles()
{
    for (const auto& transfer : m_transfers)
        transfer->file.monitor().requestDownload();
}

void VoDownload::beginAttempt(Transfer& transfer, Method method)
{
    transfer.file.begin(method);
    send(transfer);
}

QNetworkReply* VoDownload::issueRequest(const QUrl& url, Method method, const VoString& knownTag, bool isOwnServer)
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
    if (isOwnServer) {
        for (const auto& [name, value] : m_policy.headers())
            request.setRawHeader(QByteArray::fromStdString(name.toStdString()),
                                 QByteArray::fromStdString(value.toStdString()));
    }
    QNetworkReply* reply = nullptr;
    if (impl->interimServers().contains(ConnectionName(url)))
        reply = new vo::detail::PlainHttpReply(request, method == Method::Head ? QNetworkAccessManager::HeadOperation
                                                                               : QNetworkAccessManager::GetOperation);
    else
        reply = method == Method::Head ? network->head(request) : network->get(request);
    if (method == Method::Get)
        reply->setReadBufferSize(m_limit.readAhead(ReadBufferSize));
    return reply;
}

void VoDownload::send(Transfer& transfer)
{
    VoDownloadManagerImpl* const impl = manager();
    if (!impl)
        throw VoNullPointerException("Download has no manager");
    const QString connection = ConnectionName(transfer.file.target());
    impl->connections().acquire(connection, this, [this, &transfer, connection] {
        transfer.connection = connection;
        guarded([&] { sendNow(transfer); });
    });
}

void VoDownload::sendNow(Transfer& transfer)
{
    const DownloadFile& file = transfer.file;
    const VoString knownTag = file.isAskedForChanges() ? m_policy.knownTag : VoString();
    const bool isOwnServer = ConnectionName(file.target()) == ConnectionName(file.ownPlace().toQUrl());
    QNetworkReply* const reply = issueRequest(file.target(), file.method(), knownTag, isOwnServer);
    transfer.file.sent();
    transfer.reply = reply;
    touch(transfer);
    transfer.floor.restart(transfer.lastActivity, file.monitor().received());
    m_replies[reply] = &transfer;

    connect(reply, &QNetworkReply::redirected, this,
            [this, reply](const QUrl& target) { guarded([&] { onRedirected(*reply, target); }); });
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] { guarded([&] { onMetaData(*reply); }); });
    if (file.method() == Method::Get)
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

void VoDownload::release(Transfer& transfer)
{
    transfer.retryTimer.stop();
    transfer.file.reset();
    transfer.isPaused = false;
    m_paused.erase(std::remove(m_paused.begin(), m_paused.end(), &transfer), m_paused.end());
    const QString connection = std::exchange(transfer.connection, QString());
    QNetworkReply* const reply = transfer.reply;
    transfer.reply.clear();
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

VoDownload::Transfer* VoDownload::transferOf(QNetworkReply* reply) const
{
    const auto found = m_replies.find(reply);
    return found == m_replies.end() ? nullptr : found->second;
}

void VoDownload::touch(Transfer& transfer)
{
    transfer.lastActivity = m_clock.elapsed();
}

// The framework's own way of following an approved redirect posts requests twice from the second hop on and ends with
// empty bodies. So each hop is a request of its own; and the reply's URL is that of the target already when it tells of
// the redirect, so the URL that was asked is kept here.
void VoDownload::onRedirected(QNetworkReply& reply, const QUrl& target)
{
    Transfer* const transfer = transferOf(&reply);
    if (!transfer)
        return;
    touch(*transfer);
    const QUrl from = transfer->file.target();
    const VoString hop = "from (" + DisplayText(from) + ") to (" + DisplayText(target) + ")";
    DownloadLog().diagnostic("Redirect requested " + hop);

    VoString refusal;
    switch (vo::detail::RedirectDecision(from, target, manager()->redirectHosts())) {
    case vo::detail::RedirectVerdict::Approved:
        if (!transfer->file.follow(target))
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
        DownloadLog().error(refusal);
        failed(*transfer, {VoDownloadException(refusal), true, std::nullopt});
        return;
    }
    release(*transfer);
    send(*transfer);
}

void VoDownload::onMetaData(QNetworkReply& reply)
{
    if (Transfer* const transfer = transferOf(&reply)) {
        touch(*transfer);
        accept(*transfer, reply);
    }
}

// The framework has taken an interim answer for the last one, and what follows it is lost: the request is made again,
// in a way that gets none.
bool VoDownload::isInterim(Transfer& transfer, const QNetworkReply& reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status < 100 || status >= 200)
        return false;
    const QString server = ConnectionName(transfer.file.target());
    DownloadLog().diagnostic("Interim answers from " + VoString(server));
    manager()->interimServers().insert(server);
    release(transfer);
    send(transfer);
    return true;
}

// False when the body is not to be read: the file has failed, or its answer is still to come.
bool VoDownload::accept(Transfer& transfer, QNetworkReply& reply)
{
    return !isInterim(transfer, reply) && !failedBy(transfer, transfer.file.accept(reply)) && transfer.file.isAccepted();
}

bool VoDownload::take(Transfer& transfer, QNetworkReply& reply)
{
    const std::int64_t before = transfer.file.monitor().received();
    const auto failure = transfer.file.take(reply, manager()->buffer(), m_limit.allowed(m_clock.elapsed()));
    m_limit.took(transfer.file.monitor().received() - before);
    if (failedBy(transfer, failure))
        return false;
    if (m_limit.isOn() && reply.bytesAvailable() > 0 && !transfer.file.isUnchanged())
        pause(transfer);
    return true;
}

// What is not read fills the reply's buffer, then the connection's, and then the server waits.
void VoDownload::pause(Transfer& transfer)
{
    transfer.isPaused = true;
    m_paused.push_back(&transfer);
    if (!m_resumeTimer.isActive())
        m_resumeTimer.start(ResumeInterval);
}

// Who has to pause again goes to the end of the row, and who had no turn stays before it: all come to theirs.
void VoDownload::resume()
{
    while (!m_ended && !m_paused.empty() && m_limit.allowed(m_clock.elapsed()) > 0) {
        Transfer& transfer = *m_paused.front();
        m_paused.pop_front();
        transfer.isPaused = false;
        if (!transfer.reply)
            continue;
        if (transfer.reply->isFinished())
            onFinished(*transfer.reply);
        else
            onReadyRead(*transfer.reply);
    }
    if (!m_ended && !m_paused.empty())
        m_resumeTimer.start(ResumeInterval);
}

void VoDownload::onReadyRead(QNetworkReply& reply)
{
    Transfer* const transfer = transferOf(&reply);
    if (!transfer || transfer->isPaused)
        return;
    touch(*transfer);
    if (accept(*transfer, reply) && take(*transfer, reply))
        bytesReceived();
}

void VoDownload::onFinished(QNetworkReply& reply)
{
    Transfer* const transfer = transferOf(&reply);
    if (!transfer)
        return;
    touch(*transfer);
    if (reply.error() != QNetworkReply::NoError)
        failed(*transfer, vo::detail::NetworkFailure(reply, transfer->file.target()));
    else if (transfer->isPaused || !accept(*transfer, reply))
        return;
    else if (transfer->file.method() == Method::Head)
        headerReceived(*transfer, reply);
    else if (take(*transfer, reply) && !transfer->isPaused && !failedBy(*transfer, transfer->file.finish()))
        complete(*transfer);
}

void VoDownload::headerReceived(Transfer& transfer, QNetworkReply& reply)
{
    const std::int64_t length = vo::detail::ContentLength(reply);
    release(transfer);
    transfer.file.monitor().headerReceived(length < 0 ? VoDownloadSize::Unknown() : VoDownloadSize(length));
    if (--m_outstanding != 0)
        return;
    m_monitor->headersComplete();
    m_outstanding = m_transfers.size();
    manager()->broadcast(VoSharedPtr<VoDownloadStartedNotification>::Make(m_id));
    if (m_ended)
        return;
    filesStarted();
    m_rate.update(0);
    m_monitor->requestDownload();
}

void VoDownload::complete(Transfer& transfer)
{
    release(transfer);
    const DownloadFile& file = transfer.file;
    file.monitor().fileComplete();
    manager()->callBack([&] {
        if (m_policy.onReceived)
            m_policy.onReceived(
                {VoUrl(DisplayText(file.target())), file.tag(), file.monitor().received(), file.isUnchanged()});
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

void VoDownload::checkSpeed()
{
    const qint64 now = m_clock.elapsed();
    std::vector<std::pair<Transfer*, VoDownloadException>> slow;
    for (const auto& transfer : m_transfers) {
        if (const auto failure = slowness(*transfer, now))
            slow.emplace_back(transfer.get(), *failure);
    }
    for (const auto& [transfer, failure] : slow) {
        if (m_ended)
            return;
        failed(*transfer, {failure, true, std::nullopt});
    }
}

std::optional<VoDownloadException> VoDownload::slowness(Transfer& transfer, qint64 now) const
{
    if (!transfer.reply)
        return std::nullopt;
    const std::int64_t received = transfer.file.monitor().received();
    if (transfer.isPaused) {
        transfer.lastActivity = now;
        transfer.floor.restart(now, received);
        return std::nullopt;
    }
    const qint64 timeout = Milliseconds(m_policy.stallTimeout);
    if (timeout > 0 && now - transfer.lastActivity > timeout)
        return VoDownloadException("Download timed out", Kind::Transient);
    if (!transfer.file.isAccepted())
        transfer.floor.restart(now, received);
    else if (transfer.floor.isBelow(now, received))
        return VoDownloadException("Download too slow: " + DisplayText(transfer.file.target()), Kind::Transient);
    return std::nullopt;
}

bool VoDownload::failedBy(Transfer& transfer, const std::optional<DownloadFailure>& failure)
{
    if (failure)
        failed(transfer, *failure);
    return failure.has_value();
}

// The file is asked for again where that may help; else the whole download fails.
void VoDownload::failed(Transfer& transfer, const DownloadFailure& failure)
{
    release(transfer);
    transfer.file.monitor().discardReceived();
    transfer.file.monitor().endPhase();
    if (const auto attempt = transfer.file.nextAttempt(failure)) {
        announce(transfer.file, *attempt, failure.exception.message());
        if (!m_ended)
            transfer.retryTimer.start(static_cast<int>(std::min(attempt->delay.seconds() * 1000, 1e9)));
        return;
    }
    if (transfer.file.method() == Method::Get) {
        fail(failure.exception);
        return;
    }
    const VoString text = "Header request failed: " + failure.exception.message();
    DownloadLog().error(text);
    fail(vo::detail::Completed(VoDownloadException(text, failure.exception.kind(), failure.exception.httpStatus()),
                               failure.exception.subject(), failure.exception.reason()));
}

void VoDownload::announce(const DownloadFile& file, const DownloadFile::Attempt& attempt, const VoString& reason)
{
    const VoString url = DisplayText(file.place());
    DownloadLog().information("Retrying download: " + m_id.toString() + " - " + url + " (attempt " +
                              VoString(attempt.number) + " in " + attempt.delay.toString() + "): " + reason);
    manager()->callBack([&] {
        if (m_policy.onRetry)
            m_policy.onRetry({VoUrl(url), attempt.number, attempt.delay, reason});
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
    m_speedTimer.stop();
    m_resumeTimer.stop();
    filesEnded();
    VoDownloadManagerImpl* const impl = manager();
    if (impl)
        impl->connections().forget(this);
    for (const auto& transfer : m_transfers)
        release(*transfer);
    if (impl)
        impl->ended(*this, failure);
    deleteLater();
}
