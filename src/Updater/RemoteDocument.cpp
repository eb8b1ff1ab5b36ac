#include <Updater/RemoteDocument.h>

#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Core/VoString.h>
#include <Download/VoDownloadException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>
#include <Threading/VoStopFlag.h>

namespace vo::updater::detail {

namespace {

[[noreturn]] void FailToFetch(const VoUrl& url, const VoStopFlag& stop)
{
    stop.throwIfStopped();
    throw VoDownloadException("The download service is not available: " + url.toString());
}

} // namespace

VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop)
{
    FailToFetch(url, stop);
}

void FetchFiles(const VoDeque<VoPair<VoUrl, VoFilePath>>& files, const VoStopFlag& stop,
                const std::function<void(const VoDownloadProgress&)>&)
{
    if (!files.isEmpty())
        FailToFetch(files.front().first, stop);
}

} // namespace vo::updater::detail
