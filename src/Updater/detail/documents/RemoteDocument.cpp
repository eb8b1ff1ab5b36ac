#include <Updater/detail/documents/RemoteDocument.h>

#include <Core/VoSharedPtr.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadNotification.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadRequest.h>
#include <Download/VoGroupedDownloadRequest.h>
#include <Download/detail/DownloadFailure.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/VoDataProgress.h>
#include <Updater/detail/documents/DocumentCache.h>

#include <memory>

namespace vo::updater::detail {

namespace {

// To the updater a cancelled download is a wish of its user like any other.
template <typename Request, typename... Callback>
void Fetch(const VoSharedPtr<Request>& request, const VoStopFlag& stop, Callback... callback)
{
    stop.throwIfStopped();
    try {
        VoDownloadManager::RequestWait(request, stop, callback...);
    } catch (const VoDownloadException&) {
        stop.throwIfStopped();
        throw;
    }
}

} // namespace

VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                              std::uint64_t most)
{
    VoTemporaryFile file;
    const DocumentCache cache(url);
    // Shared: where the application ends, the service may outlive the wait.
    const auto receipt = std::make_shared<VoDownloadReceipt>();
    const auto request = VoSharedPtr<VoDownloadRequest>::Make(url, file.path());
    VoDownloadPolicy forDocuments = policy;
    forDocuments.sizeLimit = VoDownloadSize(static_cast<std::int64_t>(most));
    forDocuments.bypassCaches = true;
    forDocuments.acceptCompressed = true;
    forDocuments.knownTag = cache.tag();
    forDocuments.onReceived = [receipt, tell = policy.onReceived](const VoDownloadReceipt& received) {
        *receipt = received;
        if (tell)
            tell(received);
    };
    request->setPolicy(forDocuments);
    vo::detail::About(vo::detail::DisplayText(url), [&] { Fetch(request, stop); });
    if (receipt->isUnchanged)
        cache.copyTo(file.path());
    else
        cache.keep(receipt->tag, file.path());
    return file;
}

DocumentFile::DocumentFile(const VoLocation& location, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                           std::uint64_t most)
{
    if (location.isUrl()) {
        m_fetched.emplace(FetchDocument(location.url(), stop, policy, most));
        m_path = m_fetched->path();
        m_name = vo::detail::DisplayText(location.url());
    } else {
        m_path = location.file();
        m_name = m_path.path();
    }
}

const VoFilePath& DocumentFile::path() const
{
    return m_path;
}

const VoString& DocumentFile::name() const
{
    return m_name;
}

void FetchFiles(const VoDeque<RemoteFile>& files, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                const std::function<void(const VoDownloadProgress&)>& onProgress)
{
    const auto request = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    VoDownloadPolicy forFiles = policy;
    // Of files the progress tells.
    forFiles.onReceived = nullptr;
    request->setPolicy(forFiles);
    for (const RemoteFile& file : files)
        request->add(file.url, file.path, file.size);
    Fetch(request, stop, [&onProgress](const VoSharedPtr<VoDownloadNotification>& notification) {
        if (notification->type() != VoDownloadNotification::Progress)
            return;
        const VoDownloadProgressNotification& progress = notification->asProgressMessage();
        onProgress(VoDownloadProgress(progress.received(), progress.total(), progress.transferRate()));
    });
}

} // namespace vo::updater::detail
