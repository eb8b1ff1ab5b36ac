#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Download/VoDownloadFuture.h>

#include <functional>
#include <memory>

class VoDownloadNotification;
class VoDownloadRequest;
class VoGroupedDownloadRequest;

/// The process-wide service that fetches files over HTTP and HTTPS.
///
/// The thread that calls Get() first, directly or through any other member, owns the service: all network work is done
/// there, in its Qt event loop, and notification callbacks run on it. RequestWait() called on that thread runs the loop
/// itself. When that thread has ended, or the application's loop (which may run again), a later request makes its own
/// thread the owner: that of any RequestWait(), and of the others when it runs an event loop or is the application's.
/// Any thread may call any member. An application object is REQUIRED for requests, not for Get(), Connect() and
/// SetRedirectHosts().
///
/// A download first asks for the header of each file (HEAD) to learn its size, then for the body (GET). A body is
/// written beside its target and takes the target's place when it is complete, so a failed download leaves the old file
/// as it was and nothing else behind. At most six connections are used for each host. What a download does about
/// failures is said by the policy of its request; without one the first failure ends it.
///
/// A redirect is followed only to a host that SetRedirectHosts() allows, and never to another scheme than https unless
/// the scheme stays.
///
/// A download that fails, or cannot be made, gives VoDownloadException with the text of its Failed notification:
/// "Download cancelled" when it was cancelled or its stop flag was raised; "Download service requires an application
/// object" without one; "Download service is not available" when the application quits or the owning thread ends
/// meanwhile, once there is no application object any more, and for a request that nobody would ever carry out. The
/// request functions throw these last two themselves where they can tell.
class VOCORE_EXPORT VoDownloadManager
{
public:
    /// Called with notifications, on the thread that owns the service. It may request and cancel downloads but not wait
    /// for them; it must not hold up the thread. What it throws is logged.
    using Callback = std::function<void(const VoSharedPtr<VoDownloadNotification>&)>;

    VoDownloadManager(const VoDownloadManager&) = delete;
    VoDownloadManager& operator=(const VoDownloadManager&) = delete;

    /// The service, made by the first call. It lives until the process ends.
    static VoDownloadManager& Get();

    /// Hands every notification of every download, and those of the state of the network, to `callback` while the
    /// receiver lives.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] static VoReceiver Connect(Callback callback);

    /// Start a download that goes on in the background. They return before the download has started. The forms with a
    /// callback give the id of the download and the receiver that keeps the callback connected to the notifications of
    /// this download.
    /// @{
    static VoUUID RequestDownload(const VoUrl& url, const VoFilePath& path);
    static VoUUID RequestDownload(VoSharedPtr<VoDownloadRequest> request);
    static VoUUID RequestDownload(VoSharedPtr<VoGroupedDownloadRequest> request);
    [[nodiscard]] static VoPair<VoUUID, VoReceiver> RequestDownload(const VoUrl& url, const VoFilePath& path,
                                                                    Callback callback);
    [[nodiscard]] static VoPair<VoUUID, VoReceiver> RequestDownload(VoSharedPtr<VoDownloadRequest> request,
                                                                    Callback callback);
    [[nodiscard]] static VoPair<VoUUID, VoReceiver> RequestDownload(VoSharedPtr<VoGroupedDownloadRequest> request,
                                                                    Callback callback);
    /// @}

    /// Start a download and give a future. It becomes ready when the download has ended, after its last notification;
    /// get() throws VoDownloadException when it failed. On the thread that owns the service waiting would never end:
    /// there it throws; see VoDownloadFuture.
    /// @{
    [[nodiscard]] static VoDownloadFuture RequestFuture(VoSharedPtr<VoDownloadRequest> request);
    [[nodiscard]] static VoDownloadFuture RequestFuture(VoSharedPtr<VoGroupedDownloadRequest> request);
    [[nodiscard]] static VoDownloadFuture RequestFuture(VoSharedPtr<VoDownloadRequest> request, Callback callback);
    [[nodiscard]] static VoDownloadFuture RequestFuture(VoSharedPtr<VoGroupedDownloadRequest> request,
                                                        Callback callback);
    /// @}

    /// Start a download and wait for its end. They return when the download is complete and throw VoDownloadException
    /// when it failed. Raising the stop flag cancels the download; when it is raised already nothing is started. The
    /// callback is called on the thread that owns the service, and not any more after the return.
    /// @throws VoInvalidCallException "Cannot wait for a download inside a notification callback" there
    /// @{
    static void RequestWait(const VoUrl& url, const VoFilePath& path);
    static void RequestWait(VoSharedPtr<VoDownloadRequest> request);
    static void RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request);
    static void RequestWait(const VoUrl& url, const VoFilePath& path, VoStopFlag stop);
    static void RequestWait(VoSharedPtr<VoDownloadRequest> request, VoStopFlag stop);
    static void RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request, VoStopFlag stop);
    static void RequestWait(const VoUrl& url, const VoFilePath& path, VoStopFlag stop, Callback callback);
    static void RequestWait(VoSharedPtr<VoDownloadRequest> request, VoStopFlag stop, Callback callback);
    static void RequestWait(VoSharedPtr<VoGroupedDownloadRequest> request, VoStopFlag stop, Callback callback);
    /// @}

    /// Whether the calling thread owns the service: while it waits for something else without running its event loop,
    /// no download goes on. Does not make the service: nobody owns it before it is used.
    static bool IsOwner();

    /// Cancels a download, which then fails with "Download cancelled". Does nothing when it has ended already.
    static void CancelDownload(const VoUUID& id);

    /// Allows redirects to the host `primary` and to those in the domain `secondary` ("example.com" stands for
    /// itself and all hosts below it). An empty text allows no host. To be called before the first request; at first
    /// the values are those that the library was built with, by default none.
    static void SetRedirectHosts(const VoString& primary, const VoString& secondary);

private:
    class Private;

    VoDownloadManager();
    ~VoDownloadManager();

    std::unique_ptr<Private> m_private;
};
