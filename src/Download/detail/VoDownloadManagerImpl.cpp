#include <Download/detail/VoDownloadManagerImpl.h>

#include <Core/VoExceptionText.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadNotification.h>
#include <Download/detail/DownloadLog.h>
#include <Download/detail/VoGroupDownload.h>
#include <Download/detail/VoSingleDownload.h>

#include <QtCore/QCoreApplication>
#include <QtNetwork/QNetworkAccessManager>
#if QT_VERSION_MAJOR >= 6
#include <QtNetwork/QNetworkInformation>
#endif
#include <utility>

using vo::detail::DownloadLog;

namespace {

constexpr std::size_t BufferSize = std::size_t{256} * 1024;

thread_local int CallbackDepth = 0;

} // namespace

VoDownloadManagerImpl::VoDownloadManagerImpl(VoDownloadManagerInterface& requests,
                                             std::shared_ptr<Broadcaster> broadcaster,
                                             RedirectHostsSource redirectHosts)
    : m_requests(requests)
    , m_broadcaster(std::move(broadcaster))
    , m_redirectHosts(std::move(redirectHosts))
{
    // Always queued: a request made in a notification callback must not broadcast inside that broadcast.
    connect(&requests, &VoDownloadManagerInterface::downloadRequested, this, &VoDownloadManagerImpl::startDownload,
            Qt::QueuedConnection);
    connect(&requests, &VoDownloadManagerInterface::groupedDownloadRequested, this,
            &VoDownloadManagerImpl::startGroupedDownload, Qt::QueuedConnection);
    connect(&requests, &VoDownloadManagerInterface::cancelRequested, this, &VoDownloadManagerImpl::cancelDownload,
            Qt::QueuedConnection);
    followApplication();
}

VoDownloadManagerImpl::~VoDownloadManagerImpl()
{
    shutDown();
    // What is still queued ends with this object, on this thread.
    const std::lock_guard<std::mutex> lock(m_requests.handOver());
}

QNetworkAccessManager* VoDownloadManagerImpl::networkAccessManager() const
{
    return m_network;
}

vo::detail::RedirectHosts VoDownloadManagerImpl::redirectHosts() const
{
    return m_redirectHosts();
}

vo::detail::ConnectionQueue& VoDownloadManagerImpl::connections() noexcept
{
    return m_connections;
}

QSet<QString>& VoDownloadManagerImpl::interimServers() noexcept
{
    return m_interimServers;
}

std::vector<char>& VoDownloadManagerImpl::buffer()
{
    m_buffer.resize(BufferSize);
    return m_buffer;
}

void VoDownloadManagerImpl::openNetwork()
{
    if (m_network || m_shutDown || !QCoreApplication::instance())
        return;
    m_network = new QNetworkAccessManager(this);
    followNetworkStatus();
    followApplication();
}

// The engine may be older than the application object.
void VoDownloadManagerImpl::followApplication()
{
    if (QCoreApplication::instance())
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
                &VoDownloadManagerImpl::applicationQuits, Qt::UniqueConnection);
}

void VoDownloadManagerImpl::applicationQuits()
{
    shutDown();
    deleteLater();
}

#if QT_VERSION_MAJOR < 6
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
void VoDownloadManagerImpl::followNetworkStatus()
{
    connect(m_network, &QNetworkAccessManager::networkAccessibleChanged, this,
            [this](QNetworkAccessManager::NetworkAccessibility accessibility) {
                auto status = VoNetworkStatusNotification::Unknown;
                if (accessibility == QNetworkAccessManager::Accessible)
                    status = VoNetworkStatusNotification::Connected;
                else if (accessibility == QNetworkAccessManager::NotAccessible)
                    status = VoNetworkStatusNotification::Disconnected;
                broadcast(VoSharedPtr<VoNetworkStatusNotification>::Make(status));
            });
}
QT_WARNING_POP
#else
// What the system's service tells, where there is one: without it nothing is known, and nothing is told.
void VoDownloadManagerImpl::followNetworkStatus()
{
    if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability))
        return;
    connect(QNetworkInformation::instance(), &QNetworkInformation::reachabilityChanged, this,
            [this](QNetworkInformation::Reachability reachability) {
                auto status = VoNetworkStatusNotification::Connected;
                if (reachability == QNetworkInformation::Reachability::Unknown)
                    status = VoNetworkStatusNotification::Unknown;
                else if (reachability != QNetworkInformation::Reachability::Online)
                    status = VoNetworkStatusNotification::Disconnected;
                broadcast(VoSharedPtr<VoNetworkStatusNotification>::Make(status));
            });
}
#endif

void VoDownloadManagerImpl::startDownload(const VoDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket)
{
    {
        const std::lock_guard<std::mutex> lock(m_requests.handOver());
    }
    start<VoSingleDownload>(*request, ticket);
}

void VoDownloadManagerImpl::startGroupedDownload(const VoGroupedDownloadRequestPtr& request,
                                                 const VoDownloadTicketPtr& ticket)
{
    {
        const std::lock_guard<std::mutex> lock(m_requests.handOver());
    }
    start<VoGroupDownload>(*request, ticket);
}

template <typename Download, typename Request>
void VoDownloadManagerImpl::start(const Request& request, const VoDownloadTicketPtr& ticket) noexcept
{
    try {
        openNetwork();
        auto download = std::make_unique<Download>(request, this);
        // Broadcasting a failure under an id that is taken would end the innocent download in the eyes of receivers.
        if (!m_monitor.allocate(*download)) {
            if (ticket)
                ticket->end(VoDownloadException("Download failed to register"));
            return;
        }
        VoDownload& running = *download.release();
        running.setTicket(ticket);
        if (m_shutDown)
            running.fail(VoDownloadException("Download service is not available"));
        else if (!m_network)
            running.fail(VoDownloadException("No network access manager"));
        else
            running.start();
    } catch (...) {
        const VoString text = vo::CurrentExceptionText();
        DownloadLog().error("Download failed: " + request.id().toString() + " - " + text);
        if (ticket)
            ticket->end(VoDownloadException(text));
    }
}

void VoDownloadManagerImpl::cancelDownload(const VoUUID& id)
{
    {
        const std::lock_guard<std::mutex> lock(m_requests.handOver());
    }
    DownloadLog().diagnostic("Cancelling download: " + id.toString());
    if (VoDownload* const download = m_monitor.find(id))
        download->cancel();
}

void VoDownloadManagerImpl::ended(VoDownload& download, const VoDownloadException* failure)
{
    // Kept, for the download may go before all are told: NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const VoUUID id = download.id();
    const VoDownloadTicketPtr ticket = download.ticket();
    if (failure)
        broadcast(VoSharedPtr<VoDownloadFailedNotification>::Make(*failure, id));
    else
        broadcast(VoSharedPtr<VoDownloadCompleteNotification>::Make(id));
    m_monitor.complete(id);
    m_monitor.deallocate(id);
    // Last: whoever waits for the ticket finds that all receivers have been told.
    if (!ticket)
        return;
    if (failure)
        ticket->end(*failure);
    else
        ticket->end();
}

void VoDownloadManagerImpl::shutDown() noexcept
{
    m_shutDown = true;
    Q_EMIT beginsToShutDown();
    for (VoDownload* const download : m_monitor.all())
        download->fail(VoDownloadException("Download service is not available"));
    // Not left to the destructor of the base: downloads and replies refer to members of this object.
    qDeleteAll(findChildren<VoDownload*>(QString(), Qt::FindDirectChildrenOnly));
    delete m_network;
    Q_EMIT hasShutDown();
}

void VoDownloadManagerImpl::broadcast(const VoSharedPtr<VoDownloadNotification>& notification)
{
    log(*notification);
    callBack([&] { m_broadcaster->broadcast(notification); });
}

void VoDownloadManagerImpl::callBack(const std::function<void()>& function) noexcept
{
    ++CallbackDepth;
    try {
        function();
    } catch (...) {
        DownloadLog().error("Download notification failed: " + vo::CurrentExceptionText());
    }
    --CallbackDepth;
}

bool VoDownloadManagerImpl::IsInCallback() noexcept
{
    return CallbackDepth != 0;
}

void VoDownloadManagerImpl::log(const VoDownloadNotification& notification) const
{
    const VoString& id = notification.id().toString();
    switch (notification.type()) {
    case VoDownloadNotification::Complete:
        DownloadLog().diagnostic("Download complete: " + id);
        break;
    case VoDownloadNotification::Failed:
        DownloadLog().warning("Download failed: " + id + " - " + notification.asFailedMessage().message());
        break;
    case VoDownloadNotification::NetworkStatus:
        DownloadLog().diagnostic("Network status change: " + notification.asNetworkStatusMessage().statusString());
        break;
    case VoDownloadNotification::Paused:
        DownloadLog().diagnostic("Download paused: " + id);
        break;
    case VoDownloadNotification::Progress: {
        if (!DownloadLog().isEnabled(vo::logging::Level::Diagnostic))
            break;
        const VoDownloadProgressNotification& progress = notification.asProgressMessage();
        DownloadLog().diagnostic("Download progress: " + id + " - Downloaded: " + progress.received().toString() +
                                 " Total: " + progress.total().toString() +
                                 " Rate: " + progress.transferRate().toString());
        break;
    }
    case VoDownloadNotification::Started:
        DownloadLog().diagnostic("Download started: " + id);
        break;
    }
}
