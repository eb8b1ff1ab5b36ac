#include <Download/VoDownloadManager.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoPair.h>
#include <Core/VoString.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadNotification.h>
#include <Download/detail/VoDownloadManagerImpl.h>
#include <Download/detail/VoDownloadManagerInterface.h>
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
#include <utility>
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

std::atomic<const VoDownloadManager*> Made{nullptr}; // what Get() gives, without making it

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
    bool isOwner() const;

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
    // A thread that runs the engine, for as long as it does.
    struct Home
    {
        QThread* const owner = QThread::currentThread();
        QPointer<VoDownloadManagerImpl> impl;                 // only touched in the owning thread
        std::vector<std::weak_ptr<VoDownloadTicket>> tickets; // of requests that may not have ended yet
    };
    // Whether the caller runs the loop that the engine needs.
    enum class Loop
    {
        Runs,
        MayRun
    };

    static void RequireApplication();
    void settle();
    void requireHome(Loop loop);
    void leave(const std::shared_ptr<Home>& home) noexcept;
    static void EndTickets(Home& home) noexcept;
    template <typename Request>
    std::shared_ptr<Home> handOver(const VoSharedPtr<Request>& request, const VoDownloadTicketPtr& ticket, Loop loop);
    void waitHere(Home& home, const VoUUID& id, const VoDownloadTicketPtr& ticket);

    const std::shared_ptr<Broadcaster> m_broadcaster = std::make_shared<Broadcaster>();
    VoDownloadManagerInterface m_interface;

    mutable std::mutex m_homeMutex; // guards the next two and the tickets of the home
    std::shared_ptr<Home> m_home;   // empty when its thread or the application's loop has ended
    bool m_isWatching = false;      // whether the end of the application object will be told

    std::mutex m_hostsMutex;
    vo::detail::RedirectHosts m_hosts{VOCORE_REDIRECT_PRIMARY_HOST, VOCORE_REDIRECT_SECONDARY_DOMAIN};
};

VoDownloadManager::Private::Private()
{
    settle();
}

// Makes this thread the engine's.
void VoDownloadManager::Private::settle()
{
    const auto home = std::make_shared<Home>();
    auto* const impl = new VoDownloadManagerImpl(m_interface, m_broadcaster, [this] {
        const std::lock_guard<std::mutex> lock(m_hostsMutex);
        return m_hosts;
    });
    home->impl = impl;
    QObject::connect(
        impl, &VoDownloadManagerImpl::beginsToShutDown, &m_interface, [this, home] { leave(home); },
        Qt::DirectConnection);
    QObject::connect(
        impl, &VoDownloadManagerImpl::hasShutDown, &m_interface, [home] { EndTickets(*home); }, Qt::DirectConnection);
    QObject::connect(
        home->owner, &QThread::finished, &m_interface, [home] { delete home->impl; }, Qt::DirectConnection);
    m_home = home;
}

// From now on requests go elsewhere.
void VoDownloadManager::Private::leave(const std::shared_ptr<Home>& home) noexcept
{
    const std::lock_guard<std::mutex> lock(m_homeMutex);
    if (m_home != home)
        return;
    m_interface.disconnect();
    m_home.reset();
}

// What nobody will look at any more; whoever waits for it is told.
void VoDownloadManager::Private::EndTickets(Home& home) noexcept
{
    for (const std::weak_ptr<VoDownloadTicket>& ticket : std::exchange(home.tickets, {})) {
        if (const std::shared_ptr<VoDownloadTicket> live = ticket.lock())
            live->end(VoDownloadException(NotAvailable));
    }
}

void VoDownloadManager::Private::applicationEnds() noexcept
{
    std::shared_ptr<Home> home;
    {
        const std::lock_guard<std::mutex> lock(m_homeMutex);
        m_isWatching = false;
        m_interface.disconnect();
        home = std::exchange(m_home, {});
    }
    if (!home)
        return;
    if (QThread::currentThread() == home->owner)
        delete home->impl;
    // Another owning thread gets no events any more, so nobody else would tell those who wait.
    EndTickets(*home);
}

void VoDownloadManager::Private::setRedirectHosts(const VoString& primary, const VoString& secondary)
{
    const std::lock_guard<std::mutex> lock(m_hostsMutex);
    m_hosts = {primary, secondary};
}

bool VoDownloadManager::Private::isOwner() const
{
    const std::lock_guard<std::mutex> lock(m_homeMutex);
    return m_home && m_home->owner == QThread::currentThread();
}

void VoDownloadManager::Private::RequireApplication()
{
    if (QCoreApplication::closingDown())
        throw VoDownloadException(NotAvailable);
    if (!QCoreApplication::instance())
        throw VoDownloadException("Download service requires an application object");
}

// With the mutex held. The thread that owned the engine may have ended, or the application's loop, which may run again:
// then this thread takes its place, unless nobody would ever run its loop.
void VoDownloadManager::Private::requireHome(Loop loop)
{
    if (m_home)
        return;
    const QThread* const here = QThread::currentThread();
    if (loop == Loop::MayRun && here->loopLevel() == 0 && here != QCoreApplication::instance()->thread())
        throw VoDownloadException(NotAvailable);
    settle();
}

template <typename Request>
std::shared_ptr<VoDownloadManager::Private::Home>
VoDownloadManager::Private::handOver(const VoSharedPtr<Request>& request, const VoDownloadTicketPtr& ticket, Loop loop)
{
    const std::lock_guard<std::mutex> lock(m_homeMutex);
    requireHome(loop);
    if (!std::exchange(m_isWatching, true))
        qAddPostRoutine([] { Get().m_private->applicationEnds(); });
    auto& tickets = m_home->tickets;
    if (tickets.size() == tickets.capacity())
        tickets.erase(std::remove_if(tickets.begin(), tickets.end(),
                                     [](const std::weak_ptr<VoDownloadTicket>& t) { return t.expired(); }),
                      tickets.end());
    tickets.push_back(ticket.standard());
    m_interface.request(request, ticket);
    return m_home;
}

template <typename Request>
VoUUID VoDownloadManager::Private::request(const VoSharedPtr<Request>& request)
{
    RequireApplication();
    VoUUID id = request->id();
    handOver(request, VoDownloadTicketPtr::Make(), Loop::MayRun);
    return id;
}

template <typename Request>
VoPair<VoUUID, VoReceiver> VoDownloadManager::Private::request(const VoSharedPtr<Request>& request, Callback callback)
{
    RequireApplication();
    const VoUUID id = request->id();
    VoReceiver receiver = connect(OnlyOf(id, std::move(callback)));
    handOver(request, VoDownloadTicketPtr::Make(), Loop::MayRun);
    return VoPair<VoUUID, VoReceiver>(id, std::move(receiver));
}

template <typename Request>
std::future<void> VoDownloadManager::Private::future(const VoSharedPtr<Request>& request, Callback callback)
{
    RequireApplication();
    const auto ticket = VoDownloadTicketPtr::Make();
    std::future<void> future = ticket->future();
    if (callback)
        ticket->keep(connect(OnlyOf(request->id(), std::move(callback))));
    handOver(request, ticket, Loop::MayRun);
    return future;
}

template <typename Request>
void VoDownloadManager::Private::wait(const VoSharedPtr<Request>& request, const VoStopFlag* stop, Callback callback)
{
    if (VoDownloadManagerImpl::IsInCallback())
        throw VoInvalidCallException("Cannot wait for a download inside a notification callback");
    RequireApplication();
    if (stop && stop->isStopped())
        throw Cancelled();
    const VoUUID id = request->id();
    auto ticket = VoDownloadTicketPtr::Make();
    std::future<void> future = ticket->future();
    if (callback)
        ticket->keep(connect(OnlyOf(id, std::move(callback))));
    std::shared_ptr<Home> home = handOver(request, ticket, Loop::Runs);

    VoReceiver stopped;
    if (stop)
        stopped = stop->onStop([this, id] { cancel(id); });
    if (QThread::currentThread() == home->owner)
        waitHere(*home, id, ticket);
    home.reset();
    // Once nobody else holds the ticket, the service has gone and the future tells so.
    ticket.reset();
    future.get();
}

// Runs the loop that the download needs.
void VoDownloadManager::Private::waitHere(Home& home, const VoUUID& id, const VoDownloadTicketPtr& ticket)
{
    QEventLoop loop;
    // Queued: the end may come from another thread before the loop runs, and must not be lost. By its name, so that
    // race detectors see the framework alone at work.
    ticket->onEnd([&loop] { QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection); });
    if (!ticket->hasEnded())
        loop.exec();
    ticket->onEnd(nullptr);
    if (ticket->hasEnded())
        return;
    // The application is quitting, and no loop of this thread runs any more.
    cancel(id);
    ticket->end(VoDownloadException(NotAvailable));
    if (home.impl)
        home.impl->cancelDownload(id);
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
        Made = made;
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

VoDownloadFuture VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest> request)
{
    return VoDownloadFuture(Get().m_private->future(request, {}));
}

VoDownloadFuture VoDownloadManager::RequestFuture(VoSharedPtr<VoGroupedDownloadRequest> request)
{
    return VoDownloadFuture(Get().m_private->future(request, {}));
}

VoDownloadFuture VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest> request, Callback callback)
{
    return VoDownloadFuture(Get().m_private->future(request, std::move(callback)));
}

VoDownloadFuture VoDownloadManager::RequestFuture(VoSharedPtr<VoGroupedDownloadRequest> request, Callback callback)
{
    return VoDownloadFuture(Get().m_private->future(request, std::move(callback)));
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
    RequestWait(VoDownloadRequestPtr::Make(url, path), stop);
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
    RequestWait(VoDownloadRequestPtr::Make(url, path), stop, std::move(callback));
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoDownloadRequest> request, VoStopFlag stop, Callback callback)
{
    Get().m_private->wait(request, &stop, std::move(callback));
}

void VoDownloadManager::RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request, VoStopFlag stop, Callback callback)
{
    Get().m_private->wait(request, &stop, std::move(callback));
}

bool VoDownloadManager::IsOwner()
{
    const VoDownloadManager* const made = Made;
    return made && made->m_private->isOwner();
}

void VoDownloadManager::CancelDownload(const VoUUID& id)
{
    Get().m_private->cancel(id);
}

void VoDownloadManager::SetRedirectHosts(const VoString& primary, const VoString& secondary)
{
    Get().m_private->setRedirectHosts(primary, secondary);
}
