#include <Updater/RemoteDocument.h>

#include <Core/VoString.h>
#include <Download/VoDownloadException.h>
#include <FileSystem/VoUrl.h>
#include <Threading/VoStopFlag.h>

namespace vo::updater::detail {

VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop)
{
    stop.throwIfStopped();
    throw VoDownloadException("The download service is not available: " + url.toString());
}

} // namespace vo::updater::detail
