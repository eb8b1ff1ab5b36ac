#pragma once

#include <Subsystem/VoLogging.h>

namespace vo::updater::detail {

/// The log of everything that concerns installed packages.
inline vo::logging::Logger& Log()
{
    return vo::logging::Logger::Get("updater");
}

/// The log of building and publishing releases.
inline vo::logging::Logger& PublishingLog()
{
    return vo::logging::Logger::Get("update builder");
}

} // namespace vo::updater::detail
