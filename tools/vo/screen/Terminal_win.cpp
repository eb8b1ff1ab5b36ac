#include <vo/screen/Terminal.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace vo::tool {

namespace {

// The console outlives the program and keeps what was set.
UINT outputBefore = 0;

void ResetConsole()
{
    SetConsoleOutputCP(outputBefore);
}

} // namespace

void PrepareTerminal()
{
    for (FILE* const stream : {stdin, stdout})
        _setmode(_fileno(stream), _O_BINARY);
    outputBefore = GetConsoleOutputCP();
    if (outputBefore != 0 && SetConsoleOutputCP(CP_UTF8))
        std::atexit(ResetConsole);
}

bool ErrorOutputIsTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0; // a null device counts as a terminal elsewhere
}

bool InputIsTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0 &&
           GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

std::size_t TerminalWidth()
{
    CONSOLE_SCREEN_BUFFER_INFO information{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &information))
        return 80;
    return static_cast<std::size_t>(information.srWindow.Right - information.srWindow.Left + 1);
}

OutputShape OutputSize()
{
    CONSOLE_SCREEN_BUFFER_INFO information{};
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &information))
        return OutputShape();
    const SMALL_RECT& window = information.srWindow;
    return {static_cast<std::size_t>(window.Right - window.Left + 1),
            static_cast<std::size_t>(window.Bottom - window.Top + 1)};
}

namespace {

bool ShowsColours(DWORD output)
{
    const HANDLE console = GetStdHandle(output);
    DWORD mode = 0;
    return qEnvironmentVariableIsEmpty("NO_COLOR") && GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

} // namespace

bool OutputShowsColours()
{
    return ShowsColours(STD_OUTPUT_HANDLE);
}

bool ErrorOutputShowsColours()
{
    return ShowsColours(STD_ERROR_HANDLE);
}

std::optional<signing::Passphrase> ReadSecretLine(const std::string& prompt)
{
    const HANDLE console = GetStdHandle(STD_INPUT_HANDLE);
    DWORD usual = 0;
    if (!GetConsoleMode(console, &usual))
        return std::nullopt;
    std::fwrite(prompt.c_str(), 1, prompt.size(), stderr);
    SetConsoleMode(console, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT); // without the echo
    std::array<wchar_t, 1024> line{};
    DWORD size = 0;
    const bool isRead = ReadConsoleW(console, line.data(), static_cast<DWORD>(line.size()), &size, nullptr) != 0;
    SetConsoleMode(console, usual);
    std::fputs("\n", stderr);
    while (size > 0 && (line[size - 1] == L'\n' || line[size - 1] == L'\r'))
        --size;
    std::optional<signing::Passphrase> passphrase;
    std::array<char, 3 * 1024> bytes{}; // as on other systems UTF-8, so that one passphrase opens a key on all
    if (isRead)
        passphrase.emplace(bytes.data(), static_cast<std::size_t>(WideCharToMultiByte(
                                             CP_UTF8, 0, line.data(), static_cast<int>(size), bytes.data(),
                                             static_cast<int>(bytes.size()), nullptr, nullptr)));
    SecureZeroMemory(line.data(), sizeof(line));
    SecureZeroMemory(bytes.data(), bytes.size());
    return passphrase;
}

QStringList ProgramArguments(int, char**)
{
    // argv is in the system's code page here; Qt reads the wide command line.
    return QCoreApplication::arguments().mid(1);
}

} // namespace vo::tool
