#include <Download/VoDownloadManager.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoPair.h>
#include <Core/VoString.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManagerImpl.h>
#include <Download/VoDownloadManagerInterface.h>
#include <Download/VoDownloadNotification.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QThread>
#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

// The hosts of a deployment may be built in.
#ifndef VOCORE_REDIRECT_PRIMARY_HOST
#define VOCORE_REDIRECT_PRIMARY_HOST ""
#endif
#ifndef VOCORE_REDIRECT_SECONDARY_DOMAIN
#define VOCORE_REDIRECT_SECONDARY_DOMAIN ""
#endif

namespace {

using Callback = VoDownloadManager::Callback;

const char* const NotAvailable = "Download service is not available";

VoDownloadException Cancelled()
{
    return VoDownloadException("Download cancelled", VoDownloadException::Kind::Cancelled);
}

// One receiver's trouble must not keep a notification from the others.
Callback Contained(Callback callback)
{
    if (!callback)
        throw VoInvalidParameterException("Invalid callback");
    return [callback = std::move(callback)](const VoSharedPtr<VoDownloadNotification>& notification) {
        try {
            callback(notification);
        } catch (...) {
            vo::logging::Logger::Get("download").error("Download notification failed: " + vo::CurrentExceptionText());
        }
    };
}

Callback OnlyOf(const VoUUID& id, Callback callback)
{
    return [id, contained = Contained(std::move(callback))](const VoSharedPtr<VoDownloadNotification>& notification) {
        if (notification->type() != VoDownloadNotification::NetworkStatus && notification->id() == id)
            contained(notification);
    };
}

} // namespace

class VoDownloadManager::Private
{
public:
    using Broadcaster = VoDownloadManagerImpl::Broadcaster;

    Private();

    VoReceiver connect(Callback callback) { return m_broadcaster->connect(std::move(callback)); }
    void cancel(const VoUUID& id) { m_interface.cancel(id); }
    void setRedirectHosts(const VoString& primary, const VoString& secondary);

    template <typename Request>
    VoUUID request(const VoSharedPtr<Request>& request);
    template <typename Request>
    VoPair<VoUUID, VoReceiver> request(const VoSharedPtr<Request>& request, Callback callback);
    template <typename Request>
    std::future<void> future(const VoSharedPtr<Request>& request, Callback callback);
    template <typename Request>
    void wait(const VoSharedPtr<Request>& request, const VoStopFlag* stop, Callback callback);

    void applicationEnds() noexcept;

private:
    void requireAvailable() const;
    template <typename Request>
    void handOver(const VoSharedPtr<Request>& request, const VoDownloadTicketPtr& ticket);
    void waitHere(const VoUUID& id, const VoDownloadTicketPtr& ticket);
    void ownerEnds() noexcept;

    const std::shared_ptr<Broadcaster> m_broadcaster = std::make_shared<Broadcaster>();
    VoDownloadManagerInterface m_interface;
    QThread* const m_owner = QThread::currentThread();
    std::atomic<bool> m_available{true};
    QPointer<VoDownloadManagerImpl> m_impl; // only touched in the owning thread

    std::mutex m_hostsMutex;
    vo::detail::RedirectHosts m_hosts{VOCORE_REDIRECT_PRIMARY_HOST, VOCORE_REDIRECT_SECONDARY_DOMAIN};

    std::mutex m_ticketsMutex;
    std::vector<std::weak_ptr<VoDownloadTicket>> m_tickets; // of requests that may not have ended yet
};

VoDownloadManager::Private::Private()
{
    m_impl = new VoDownloadManagerImpl(m_interface, m_broadcaster, [this] {
        const std::lock_guard<std::mutex> lock(m_hostsMutex);
        return m_hosts;
    });
    QObject::connect(
        m_impl, &VoDownloadManagerImpl::hasShutDown, &m_interface, [this] { m_available = false; },
        Qt::DirectConnection);
    QObject::connect(
        m_owner, &QThread::finished, &m_interface, [this] { ownerEnds(); }, Qt::DirectConnection);
}

void VoDownloadManager::Private::ownerEnds() noexcept
{
    delete m_impl;
}

void VoDownloadManager::Private::applicationEnds() noexcept
{
    m_available = false;
    if (QThread::currentThread() == m_owner) {
        delete m_impl;
        return;
    }
    // The owning thread gets no events any more, so nobody else would tell those who wait.
    std::vector<std::weak_ptr<VoDownloadTicket>> tickets;
    {
        const std::lock_guard<std::mutex> lock(m_ticketsMutex);
        tickets.swap(m_tickets);
    }
    for (const std::weak_ptr<VoDownloadTicket>& ticket : tickets) {
        if (const std::shared_ptr<VoDownloadTicket> live = ticket.lock())
            live->end(VoDownloadException(NotAvailable));
    }
}

void VoDownloadManager::Private::setRedirectHosts(const VoString& primary, const VoString& secondary)
{
    const std::lock_guard<std::mutex> lock(m_hostsMutex);
    m_hosts = {primary, secondary};
}

void VoDownloadManager::Private::requireAvailable() const
{
    if (!m_available || QCoreApplication::closingDown())
        throw VoDownloadException(NotAvailable);
    if (!QCoreApplication::instance())
        throw VoDownloadException("Download service requires an application object");
}

template <typename Request>
void VoDownloadManager::Private::handOver(const VoSharedPtr<Request>& request, const VoDownloadTicketPtr& ticket)
{
    {
        const std::lock_guard<std::mutex> lock(m_ticketsMutex);
        if (m_tickets.size() == m_tickets.capacity())
            m_tickets.erase(std::remove_if(m_tickets.begin(), m_tickets.end(),
                                           [](const std::weak_ptr<VoDownloadTicket>& t) { return t.expired(); }),
                            m_tickets.end());
        m_tickets.push_back(ticket.standard());
    }
    m_interface.request(request, ticket);
}

template <typename Request>
VoUUID VoDownloadManager::Private::request(const VoSharedPtr<Request>& request)
{
    requireAvailable();
    const VoUUID id = request->id();
    handOver(request, VoDownloadTicketPtr::Make());
    return id;
}

template <typename Request>
VoPair<VoUUID, VoReceiver> VoDownloadManager::Private::request(const VoSharedPtr<Request>& request, Callback callback)
{
    requireAvailable();
    const VoUUID id = request->id();
    VoReceiver receiver = connect(OnlyOf(id, std::move(callback)));
    handOver(request, VoDownloadTicketPtr::Make());
    return VoPair<VoUUID, VoReceiver>(id, std::move(receiver));
}

template <typename Request>
std::future<void> VoDownloadManager::Private::future(const VoSharedPtr<Request>& request, Callback callback)
{
    requireAvailable();
    const auto ticket = VoDownloadTicketPtr::Make();
    std::future<void> future = ticket->future();
    if (callback)
        ticket->keep(connect(OnlyOf(request->id(), std::move(callback))));
    handOver(request, ticket);
    return future;
}

template <typename Request>
void VoDownloadManager::Private::wait(const VoSharedPtr<Request>& request, const VoStopFlag* stop, Callback callback)
{
    if (VoDownloadManagerImpl::IsInCallback())
        throw VoInvalidCallException("Cannot wait for a download inside a notification callback");
    requireAvailable();
    if (stop && stop->isStopped())
        throw Cancelled();
    const VoUUID id = request->id();
    auto ticket = VoDownloadTicketPtr::Make();
    std::future<void> future = ticket->future();
    if (callback)
        ticket->keep(connect(OnlyOf(id, std::move(callback))));
    handOver(request, ticket);

    VoReceiver stopped;
    if (stop)
        stopped = stop->onStop([this, id] { cancel(id); });
    if (QThread::currentThread() == m_owner)
        waitHere(id, ticket);
    // Once nobody else holds the ticket, the service has gone and the future tells so.
    ticket.reset();
    future.get();
}

// Runs the loop that the download needs.
void VoDownloadManager::Private::waitHere(const VoUUID& id, const VoDownloadTicketPtr& ticket)
{
    QEventLoop loop;
    ticket->onEnd([&loop] { loop.quit(); });
    if (!ticket->hasEnded())
        loop.exec();
    ticket->onEnd(nullptr);
    if (ticket->hasEnded())
        return;
    // The application is quitting, and no loop of this thread runs any more.
    cancel(id);
    ticket->end(VoDownloadException(NotAvailable));
    if (m_impl)
        m_impl->cancelDownload(id);
}

VoDownloadManager::VoDownloadManager()
    : m_private(std::make_unique<Private>())
{
}

VoDownloadManager::~VoDownloadManager() = default;

VoDownloadManager& VoDownloadManager::Get()
{
    // Never destroyed: requests may come while static objects are. The engine goes with the application object.
    static VoDownloadManager& manager = *[] {
        auto* const made = new VoDownloadManager;
        qAddPostRoutine([] { Get().m_private->applicationEnds(); });
        return made;
    }();
    return manager;
}

VoReceiver VoDownloadManager::Connect(Callback callback)
{
    return Get().m_private->connect(Contained(std::move(callback)));
}

VoUUID VoDownloadManager::RequestDownload(const VoUrl& url, const VoFilePath& path)
{
    return RequestDownload(VoDownloadRequestPtr::Make(url, path));
}

VoUUID VoDownloadManager::RequestDownload(VoSharedPtr<VoDownloadRequest> request)
{
    return Get().m_private->request(request);
}

VoUUID VoDownloadManager::RequestDownload(VoSharedPtr<VoGroupedDownloadRequest> request)
{
    return Get().m_private->request(request);
}

VoPair<VoUUID, VoReceiver> VoDownloadManager::RequestDownload(const VoUrl& url, const VoFilePath& path,
                                                              Callback callback)
{
    return RequestDownload(VoDownloadRequestPtr::Make(url, path), std::move(callback));
}

VoPair<VoUUID, VoReceiver> VoDownloadManager::RequestDownload(VoSharedPtr<VoDownloadRequest> request, Callback callback)
{
    return Get().m_private->request(request, std::move(callback));
}

VoPair<VoUUID, VoReceiver> VoDownloadManager::RequestDownload(VoSharedPtr<VoGroupedDownloadRequest> request,
                                                              Callback callback)
{
    return Get().m_private->request(request, std::move(callback));
}

std::future<void> VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest> request)
{
    return Get().m_private->future(request, {});
}

std::future<void> VoDownloadManager::RequestFuture(VoSharedPtr<VoGroupedDownloadRequest> request)
{
    return Get().m_private->future(request, {});
}

std::future<void> VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest> request, Callback callback)
{
    return Get().m_private->future(request, std::move(callback));
}

std::future<void> VoDownloadManager::RequestFuture(VoSharedPtr<VoGroupedDownloadRequest> request, Callback callback)
{
    return Get().m_private->future(request, std::move(callback));
}

void VoDownloadManager::RequestWait(const VoUrl& url, const VoFilePath& path)
{
    RequestWait(VoDownloadRequestPtr::Make(url, path));
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoDownloadRequest> request)
{
    Get().m_private->wait(request, nullptr, {});
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request)
{
    Get().m_private->wait(request, nullptr, {});
}

void VoDownloadManager::RequestWait(const VoUrl& url, const VoFilePath& path, VoStopFlag stop)
{
    RequestWait(VoDownloadRequestPtr::Make(url, path), std::move(stop));
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoDownloadRequest> request, VoStopFlag stop)
{
    Get().m_private->wait(request, &stop, {});
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request, VoStopFlag stop)
{
    Get().m_private->wait(request, &stop, {});
}

void VoDownloadManager::RequestWait(const VoUrl& url, const VoFilePath& path, VoStopFlag stop, Callback callback)
{
    RequestWait(VoDownloadRequestPtr::Make(url, path), std::move(stop), std::move(callback));
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoDownloadRequest> request, VoStopFlag stop, Callback callback)
{
    Get().m_private->wait(request, &stop, std::move(callback));
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request, VoStopFlag stop, Callback callback)
{
    Get().m_private->wait(request, &stop, std::move(callback));
}

void VoDownloadManager::CancelDownload(const VoUUID& id)
{
    Get().m_private->cancel(id);
}

void VoDownloadManager::SetRedirectHosts(const VoString& primary, const VoString& secondary)
{
    Get().m_private->setRedirectHosts(primary, secondary);
}
