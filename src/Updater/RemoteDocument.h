#pragma once

#include <Core/VoForward.h>
#include <FileSystem/VoTemporaryFile.h>

namespace vo::updater::detail {

/// Fetches a document into a temporary file, which lives as long as the result. The one place where the documents of
/// the updater meet the download service. Throws VoDownloadException as long as there is no such service.
VoTemporaryFile FetchDocument(const VoUrl& url, const VoStopFlag& stop);

} // namespace vo::updater::detail
