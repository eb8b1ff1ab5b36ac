#include <vo/screen/Terminal.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <array>
#include <conio.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>

namespace vo::tool {

bool ErrorOutputIsTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

bool InputIsTerminal()
{
    return _isatty(_fileno(stdin)) != 0 && _isatty(_fileno(stdout)) != 0;
}

std::size_t TerminalWidth()
{
    CONSOLE_SCREEN_BUFFER_INFO information{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &information))
        return 80;
    return static_cast<std::size_t>(information.srWindow.Right - information.srWindow.Left + 1);
}

std::optional<signing::Passphrase> ReadSecretLine(const std::string& prompt)
{
    if (_isatty(_fileno(stdin)) == 0)
        return std::nullopt;
    _cputs(prompt.c_str());
    std::array<char, 1024> line{};
    std::size_t size = 0;
    for (int c = _getch(); c != '\r' && c != '\n' && size < line.size(); c = _getch())
        line[size++] = static_cast<char>(c);
    _cputs("\r\n");
    std::optional<signing::Passphrase> passphrase;
    passphrase.emplace(line.data(), size);
    line.fill('\0');
    return passphrase;
}

QStringList ProgramArguments(int, char**)
{
    // argv is in the system's code page here; Qt reads the wide command line.
    return QCoreApplication::arguments().mid(1);
}

} // namespace vo::tool
