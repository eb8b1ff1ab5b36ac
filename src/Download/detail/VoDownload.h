#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoTransferRateMonitor.h>
#include <Download/detail/DownloadFailure.h>
#include <Download/detail/DownloadFile.h>
#include <Download/detail/DownloadTicket.h>
#include <Download/detail/RateLimit.h>
#include <Download/detail/VoDownloadMonitors.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtCore/QUrl>

#include <deque>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

class QNetworkReply;
class VoDownloadManagerImpl;

/// One running download: asks for the headers of its files, then for the bodies, and ends exactly once.
///
/// Lives in the manager's thread as a child of the manager, from the hand-over of the request until its end, and
/// deletes itself after that. Nothing leaves a slot as an exception: what goes wrong there fails the download.
class VOCORE_PRIVATE_EXPORT VoDownload : public QObject
{
    Q_OBJECT

public:
    using Method = vo::detail::DownloadMethod; ///< What is asked of a server.

    ~VoDownload() override;

    const VoUUID& id() const noexcept;          ///< The id of the request.
    VoDownloadTicketPtr ticket() const;         ///< The caller; may be empty.
    void setTicket(VoDownloadTicketPtr ticket); ///< Sets ticket().

    virtual bool isGrouped() const = 0;       ///< Whether the request was a grouped one.
    virtual VoString description() const = 0; ///< What is downloaded, for the log.

    void start();                                  ///< Begins with the headers.
    void cancel();                                 ///< Fails with "Download cancelled".
    void fail(const VoDownloadException& failure); ///< Ends the download and releases everything.

    /// Sends a request whose redirects wait for approval. A version that is known already asks for changes only. The
    /// policy's headers go to the file's own server.
    /// @throws VoNullPointerException "Download has no manager"
    /// @throws VoDownloadException "Parent network access manager unavailable"
    QNetworkReply* issueRequest(const QUrl& url, Method method, const VoString& knownTag = VoString(),
                                bool isOwnServer = false);

protected:
    /// @throws VoDownloadException "Download must have a parent manager" unless the parent is a VoDownloadManagerImpl
    VoDownload(QObject* parent, const VoUUID& id, const VoDownloadPolicy& policy);

    /// To be called in the constructor, for each file, before the download starts. @{
    void setMonitor(std::unique_ptr<VoSingleDownloadMonitor> monitor);
    void addFile(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& limit);
    /// @}
    VoSingleDownloadMonitor& monitor() const;
    void issueHeaders(); ///< One HEAD for each file.
    void issueFiles();   ///< One GET for each file.

    virtual std::unique_ptr<VoSingleFileDownloadMonitor> makeFileMonitor(const VoUrl& url,
                                                                         VoAbstractDownloadMonitor::Issue header,
                                                                         VoAbstractDownloadMonitor::Issue body) = 0;
    virtual void filesStarted();      ///< The files begin to come.
    virtual void bytesReceived() = 0; ///< Some more have come: a time to report.
    virtual void filesEnded();        ///< No more will come.
    void reportProgress();            ///< Broadcasts how far the download is.

private:
    struct Transfer;

    template <typename Action>
    void guarded(Action action) noexcept;

    VoDownloadManagerImpl* manager() const;
    void beginAttempt(Transfer& transfer, Method method);
    void send(Transfer& transfer);
    void sendNow(Transfer& transfer);
    void release(Transfer& transfer);
    void giveUp(QNetworkReply& reply);
    void touch(Transfer& transfer);
    void pause(Transfer& transfer);
    void resume();
    Transfer* transferOf(QNetworkReply* reply) const;

    void onRedirected(QNetworkReply& reply, const QUrl& target);
    void onMetaData(QNetworkReply& reply);
    void onReadyRead(QNetworkReply& reply);
    void onFinished(QNetworkReply& reply);
    void checkSpeed();
    std::optional<VoDownloadException> slowness(Transfer& transfer, qint64 now) const;

    bool isInterim(Transfer& transfer, const QNetworkReply& reply);
    bool accept(Transfer& transfer, QNetworkReply& reply);
    bool take(Transfer& transfer, QNetworkReply& reply);
    void headerReceived(Transfer& transfer, QNetworkReply& reply);
    void complete(Transfer& transfer);

    bool failedBy(Transfer& transfer, const std::optional<vo::detail::DownloadFailure>& failure);
    void failed(Transfer& transfer, const vo::detail::DownloadFailure& failure);
    void announce(const vo::detail::DownloadFile& file, const vo::detail::DownloadFile::Attempt& attempt,
                  const VoString& reason);

    void end(const VoDownloadException* failure);

    const VoUUID m_id;
    const VoDownloadPolicy m_policy;
    VoDownloadTicketPtr m_ticket;
    std::unique_ptr<VoSingleDownloadMonitor> m_monitor;
    std::vector<std::unique_ptr<Transfer>> m_transfers;      // in the order of the request
    std::unordered_map<QNetworkReply*, Transfer*> m_replies; // those whose signals are heard
    std::size_t m_outstanding = 0;                           // files that the running phase waits for
    bool m_ended = false;

    vo::detail::RateLimit m_limit;
    std::deque<Transfer*> m_paused; // by the limit, in the order in which they go on
    QTimer m_resumeTimer;

    QTimer m_speedTimer;
    QElapsedTimer m_clock;
    VoTransferRateMonitor m_rate;
    std::int64_t m_reported = 0; // the most bytes reported so far
};
