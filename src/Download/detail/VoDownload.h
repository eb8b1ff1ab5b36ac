#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoTransferRateMonitor.h>
#include <Download/detail/DownloadFailure.h>
#include <Download/detail/DownloadTicket.h>
#include <Download/detail/VoDownloadMonitors.h>
#include <Download/detail/VoDownloadStreamer.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtCore/QUrl>

#include <memory>
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
    /// What is asked of a server.
    enum class Method
    {
        Head,
        Get
    };

    ~VoDownload() override;

    const VoUUID& id() const noexcept;          ///< The id of the request.
    VoDownloadTicketPtr ticket() const;         ///< The caller; may be empty.
    void setTicket(VoDownloadTicketPtr ticket); ///< Sets ticket().

    virtual bool isGrouped() const = 0;       ///< Whether the request was a grouped one.
    virtual VoString description() const = 0; ///< What is downloaded, for the log.

    void start();                                  ///< Begins with the headers.
    void cancel();                                 ///< Fails with "Download cancelled".
    void fail(const VoDownloadException& failure); ///< Ends the download and releases everything.

    /// Sends a request whose redirects wait for approval. A version that is known already asks for changes only.
    /// @throws VoNullPointerException "Download has no manager"
    /// @throws VoDownloadException "Parent network access manager unavailable"
    QNetworkReply* issueRequest(const QUrl& url, Method method, const VoString& knownTag = VoString());

protected:
    /// @throws VoDownloadException "Download must have a parent manager" unless the parent is a VoDownloadManagerImpl
    VoDownload(QObject* parent, const VoUUID& id, const VoDownloadPolicy& policy);

    struct File;

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
    template <typename Action>
    void guarded(Action action) noexcept;

    VoDownloadManagerImpl* manager() const;
    void beginAttempt(File& file, Method method);
    void send(File& file, Method method);
    void sendNow(File& file);
    void release(File& file);
    void giveUp(QNetworkReply& reply);
    File* fileOf(QNetworkReply* reply) const;

    void onRedirected(QNetworkReply& reply, const QUrl& target);
    void onMetaData(QNetworkReply& reply);
    void onReadyRead(QNetworkReply& reply);
    void onFinished(QNetworkReply& reply);
    void checkStall();

    bool accept(File& file, QNetworkReply& reply);
    bool withinLimits(File& file, std::int64_t bytes);
    bool acceptCoding(File& file, QNetworkReply& reply);
    bool isAskedForChanges(const File& file) const;
    void refuseSize(File& file, const char* refusal);
    bool takeBody(File& file, QNetworkReply& reply);
    void fileComplete(File& file);
    void headerReceived(File& file, QNetworkReply& reply);
    void bodyReceived(File& file, QNetworkReply& reply);
    void touch(File& file);

    void fileFailed(File& file, const vo::detail::DownloadFailure& failure);
    bool tryElsewhere(File& file, const VoDownloadException& reason);
    bool tryLater(File& file, const vo::detail::DownloadFailure& failure);
    void announce(const File& file, VoTimeDuration delay, unsigned attempt, const VoString& reason);

    void end(const VoDownloadException* failure);

    const VoUUID m_id;
    const VoDownloadPolicy m_policy;
    VoDownloadTicketPtr m_ticket;
    std::unique_ptr<VoSingleDownloadMonitor> m_monitor;
    std::vector<std::unique_ptr<File>> m_files;
    std::unordered_map<QNetworkReply*, File*> m_replies;
    std::size_t m_outstanding = 0; // files that the running phase waits for
    bool m_ended = false;

    QTimer m_stallTimer;
    QElapsedTimer m_clock;
    VoTransferRateMonitor m_rate;
    std::int64_t m_reported = 0; // the most bytes reported so far
};
