#pragma once

#include "Arguments.h"
#include "Console.h"

#include <Download/VoDownloadPolicy.h>
#include <Threading/VoStopFlag.h>

#include <atomic>

namespace vo::tool {

/// What a subcommand works with: its arguments, where it writes to, and the wish to stop.
class Session
{
public:
    const Arguments& arguments;
    Console& console;
    VoStopFlag stop;
    VoDownloadPolicy downloads; ///< How documents and chunks are fetched from a server.
    /// How often a file was tried again. Counted on the thread of the download service.
    const std::atomic<unsigned>& retries;
};

} // namespace vo::tool
