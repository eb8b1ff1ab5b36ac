#pragma once

#include "Command.h"

#include <Download/VoDownloadPolicy.h>

#include <atomic>
#include <vector>

namespace vo::tool {

class Arguments;
class Console;

/// The options of commands that fetch from a server.
std::vector<Option> DownloadOptions();

/// How a command fetches from a server, by its options: three retries unless they say otherwise. Retries are shown as
/// messages and counted. The options that concern the whole process (certificate authorities, redirects) are put into
/// effect. Throws UsageError for a value that cannot be used.
VoDownloadPolicy PrepareDownloads(const Arguments& arguments, Console& console, std::atomic<unsigned>& retries);

} // namespace vo::tool
