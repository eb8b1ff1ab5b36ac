#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoTemporaryFile.h>
#include <FileSystem/VoUrl.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <functional>

struct VoDownloadPolicy;
class VoDownloadProgress;

namespace vo::updater::detail {

/// Fetches a document into a temporary file, which lives as long as the result: compressed where the server can do
/// that, and only when it has changed since it was fetched last (DocumentCache). The policy's onReceived hears of it.
/// The one place where the documents of the updater meet the download service. Documents of more than @p most bytes
/// are refused, compressed or not.
/// @throws VoDownloadException
/// @throws VoUserCancelledException when the flag is raised
VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                              std::uint64_t most = LargestDocument);

/// A file to fetch, and the size that it may not exceed.
struct RemoteFile
{
    VoUrl url;
    VoFilePath path;
    VoDownloadSize size;
};

/// Fetches files to the given places, as one download whose progress is reported, on the download service's thread.
/// The one place where the installer meets that service. Throws as FetchDocument.
void FetchFiles(const VoDeque<RemoteFile>& files, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                const std::function<void(const VoDownloadProgress&)>& onProgress);

} // namespace vo::updater::detail
