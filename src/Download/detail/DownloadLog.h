#pragma once

#include <Subsystem/VoLogging.h>

namespace vo::detail {

/// Where the download service logs what becomes of its transfers.
inline logging::Logger& DownloadLog()
{
    static logging::Logger& logger = logging::Logger::Get("download");
    return logger;
}

} // namespace vo::detail
