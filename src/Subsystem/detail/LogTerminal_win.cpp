#include <Subsystem/detail/LogLevels.h>

#if defined(_WIN32)

#include <QtCore/QtGlobal>

#include <windows.h>

namespace vo::logging {

bool StandardErrorShowsColours()
{
    const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return qEnvironmentVariableIsEmpty("NO_COLOR") && GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

} // namespace vo::logging

#endif
