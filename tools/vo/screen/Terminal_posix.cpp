#include <vo/screen/Terminal.h>

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <array>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace vo::tool {

void PrepareTerminal() {}

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

OutputShape OutputSize()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return OutputShape();
    return {size.ws_col, size.ws_row};
}

namespace {

bool ShowsColours(int output)
{
    return qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb" && isatty(output) == 1;
}

} // namespace

bool OutputShowsColours()
{
    return ShowsColours(STDOUT_FILENO);
}

bool ErrorOutputShowsColours()
{
    return ShowsColours(STDERR_FILENO);
}

std::optional<signing::Passphrase> ReadSecretLine(const std::string& prompt)
{
    const int terminal = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal == -1)
        return std::nullopt;
    termios usual{};
    ::tcgetattr(terminal, &usual);
    termios silent = usual;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(terminal, TCSAFLUSH, &silent);
    std::array<char, 1024> line{};
    ssize_t size = ::write(terminal, prompt.data(), prompt.size());
    size = ::read(terminal, line.data(), line.size());
    ::tcsetattr(terminal, TCSAFLUSH, &usual);
    std::optional<signing::Passphrase> passphrase;
    if (size > 0 && ::write(terminal, "\n", 1) == 1)
        passphrase.emplace(
            line.data(), static_cast<std::size_t>(line[static_cast<std::size_t>(size) - 1] == '\n' ? size - 1 : size));
    line.fill('\0');
    ::close(terminal);
    return passphrase;
}

QStringList ProgramArguments(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    return arguments;
}

} // namespace vo::tool
