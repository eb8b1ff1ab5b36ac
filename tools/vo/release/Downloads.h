#pragma once

#include <vo/line/Command.h>
#include <vo/line/Location.h>

#include <Download/VoDownloadPolicy.h>

#include <atomic>
#include <cstdint>
#include <vector>

namespace vo::tool {

class Arguments;
class Console;

/// The options of commands that fetch from a server.
std::vector<Option> DownloadOptions();

/// What is counted of a command's downloads, on the thread of the download service.
struct DownloadCounts
{
    std::atomic<unsigned> retries{0};            ///< How often a file was tried again.
    std::atomic<std::uint64_t> documentBytes{0}; ///< Bytes of documents as they came, maybe compressed.
};

/// How a command fetches from a server, by its options: three retries unless they say otherwise. Retries are shown as
/// messages. The options that concern the whole process (certificate authorities, redirects) are put into effect.
/// @throws UsageError for a value that cannot be used
VoDownloadPolicy PrepareDownloads(const Arguments& arguments, Console& console, DownloadCounts& counts);

/// Shows what was counted, for a command that has read `document` from a server.
void ShowDownloadCounts(Session& session, const VoLocation& document);

} // namespace vo::tool
