#include <Subsystem/detail/SystemLog.h>

#if !defined(_WIN32)

#include <Core/VoPrintable.h>

#include <syslog.h>

namespace vo::logging {

namespace {

int PriorityOf(Level level)
{
    switch (level) {
    case Level::Diagnostic:
        return LOG_DEBUG;
    case Level::Information:
        return LOG_INFO;
    case Level::Warning:
        return LOG_WARNING;
    case Level::Error:
        return LOG_ERR;
    case Level::Critical:
        break;
    }
    return LOG_CRIT;
}

} // namespace

void WriteToSystemLog(const Record& record)
{
    using vo::Printable;
    syslog(LOG_USER | PriorityOf(record.level), "[%s] %s", Printable(record.category).c_str(),
           Printable(record.text).c_str());
}

} // namespace vo::logging

#endif
