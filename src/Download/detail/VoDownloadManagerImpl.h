#pragma once

#include <Core/VoExport.h>
#include <Core/VoSharedPtr.h>
#include <Download/detail/ConnectionQueue.h>
#include <Download/detail/VoDownloadManagerInterface.h>
#include <Download/detail/VoDownloadManagerMonitor.h>
#include <Download/detail/VoRedirectPolicy.h>
#include <Threading/VoBroadcaster.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QString>

#include <functional>
#include <memory>
#include <vector>

class QNetworkAccessManager;
class VoDownload;
class VoDownloadException;
class VoDownloadNotification;

/// The engine: owns the network access and the live downloads, in the thread that made it.
class VOCORE_PRIVATE_EXPORT VoDownloadManagerImpl : public QObject
{
    Q_OBJECT

public:
    using Broadcaster = VoBroadcaster<VoSharedPtr<VoDownloadNotification>>;
    /// Gives the hosts that redirects may lead to; called on any thread.
    using RedirectHostsSource = std::function<vo::detail::RedirectHosts()>;

    VoDownloadManagerImpl(VoDownloadManagerInterface& requests, std::shared_ptr<Broadcaster> broadcaster,
                          RedirectHostsSource redirectHosts);
    ~VoDownloadManagerImpl() override; ///< As shutDown().

    /// Null before the first request and after shutDown().
    QNetworkAccessManager* networkAccessManager() const;
    vo::detail::RedirectHosts redirectHosts() const;
    vo::detail::ConnectionQueue& connections() noexcept;
    /// Servers (as they are counted by connections) that send interim answers, at which the framework ends a request.
    QSet<QString>& interimServers() noexcept;
    std::vector<char>& buffer(); ///< For bytes on their way; one user at a time.

    /// Logs a notification and hands it to all receivers.
    void broadcast(const VoSharedPtr<VoDownloadNotification>& notification);
    /// Runs a caller's function under the rules of notification callbacks; logs what it throws.
    void callBack(const std::function<void()>& function) noexcept;
    /// Whether this thread is inside a notification callback.
    static bool IsInCallback() noexcept;

    /// To be called by a download at its end. `failure` is null when it is complete.
    void ended(VoDownload& download, const VoDownloadException* failure);

    /// Fails all downloads and refuses new ones: "Download service is not available".
    void shutDown() noexcept;

Q_SIGNALS:
    void beginsToShutDown(); ///< No download will be started any more.
    void hasShutDown();      ///< All that were running have ended.

public Q_SLOTS:
    void startDownload(const VoDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket);
    void startGroupedDownload(const VoGroupedDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket);
    void cancelDownload(const VoUUID& id);

private Q_SLOTS:
    void applicationQuits();

private:
    template <typename Download, typename Request>
    void start(const Request& request, const VoDownloadTicketPtr& ticket) noexcept;
    void openNetwork();
    void followApplication();
    void followNetworkStatus();
    void log(const VoDownloadNotification& notification) const;

    VoDownloadManagerInterface& m_requests;
    const std::shared_ptr<Broadcaster> m_broadcaster;
    const RedirectHostsSource m_redirectHosts;
    QPointer<QNetworkAccessManager> m_network;
    VoDownloadManagerMonitor m_monitor;
    vo::detail::ConnectionQueue m_connections;
    QSet<QString> m_interimServers;
    std::vector<char> m_buffer;
    bool m_shutDown = false;
};
