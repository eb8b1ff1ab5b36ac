#include <vo/screen/Terminal.h>

#include <QtCore/QStringList>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vo::tool {

bool ErrorOutputIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool InputIsTerminal()
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

std::size_t TerminalWidth()
{
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return 80;
    return size.ws_col;
}

QStringList ProgramArguments(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    return arguments;
}

} // namespace vo::tool
