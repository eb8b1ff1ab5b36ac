#pragma once

#include <Subsystem/VoLogging.h>

namespace vo::logging {

/// Hands a record to the system's log: the one of daemons, or the output for debuggers.
void WriteToSystemLog(const Record& record);

} // namespace vo::logging
