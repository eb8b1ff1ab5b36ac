#include <Subsystem/detail/LogLevels.h>

#if !defined(_WIN32)

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <unistd.h>

namespace vo::logging {

bool StandardErrorShowsColours()
{
    return qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb" && isatty(STDERR_FILENO) == 1;
}

} // namespace vo::logging

#endif
