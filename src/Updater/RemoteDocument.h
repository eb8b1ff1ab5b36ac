#pragma once

#include <Core/VoForward.h>
#include <FileSystem/VoTemporaryFile.h>

#include <functional>

class VoDownloadProgress;

namespace vo::updater::detail {

/// Fetches a document into a temporary file, which lives as long as the result. The one place where the documents of
/// the updater meet the download service. Throws VoDownloadException as long as there is no such service.
VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop);

/// Fetches files to the given places, as one download whose progress is reported. The one place where the installer
/// meets the download service. Throws VoDownloadException as long as there is no such service.
void FetchFiles(const VoDeque<VoPair<VoUrl, VoFilePath>>& files, const VoStopFlag& stop,
                const std::function<void(const VoDownloadProgress&)>& onProgress);

} // namespace vo::updater::detail
