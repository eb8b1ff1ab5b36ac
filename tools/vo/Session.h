#pragma once

#include <vo/line/Arguments.h>
#include <vo/release/Downloads.h>
#include <vo/screen/Console.h>

#include <Download/VoDownloadPolicy.h>
#include <Threading/VoStopFlag.h>

namespace vo::tool {

/// What a subcommand works with: its arguments, where it writes to, and the wish to stop.
class Session
{
public:
    const Arguments& arguments;
    Console& console;
    VoStopFlag stop;
    VoDownloadPolicy downloads; ///< How documents and chunks are fetched from a server.
    const DownloadCounts& counts;
};

} // namespace vo::tool
