#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoTemporaryFile.h>
#include <FileSystem/VoUrl.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <functional>
#include <optional>

struct VoDownloadPolicy;
class VoDownloadProgress;
class VoLocation;

namespace vo::updater::detail {

/// Fetches a document into a temporary file, which lives as long as the result: compressed where the server can do
/// that, and only when it has changed since it was fetched last (DocumentCache). The policy's onReceived hears of it.
/// The one place where the documents of the updater meet the download service. Documents of more than `most` bytes
/// are refused, compressed or not.
/// @throws VoDownloadException
/// @throws VoUserCancelledException when the flag is raised
VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                              std::uint64_t most = LargestDocument);

/// A document to be read: a file where it stands, or what was fetched of a URL. The one place where the updater gets
/// its documents from; the file lives as long as this.
class DocumentFile
{
public:
    /// @throws VoDownloadException as FetchDocument, for a URL, also for more than `most` bytes
    DocumentFile(const VoLocation& location, const VoStopFlag& stop, const VoDownloadPolicy& policy,
                 std::uint64_t most = LargestDocument);

    const VoFilePath& path() const; ///< What to read.
    const VoString& name() const;   ///< What people are told that it is; no password is in it.

private:
    std::optional<VoTemporaryFile> m_fetched;
    VoFilePath m_path;
    VoString m_name;
};

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
