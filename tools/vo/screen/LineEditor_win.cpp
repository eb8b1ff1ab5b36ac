#include <vo/screen/LineEditor.h>

#include <QtCore/QString>

#include <windows.h>

#include <string>

namespace vo::tool {

// The console edits lines and keeps a history of its own; it offers no completion.
struct LineEditor::Private
{
    VoStopFlag ended;
};

LineEditor::LineEditor(Completer, const VoStopFlag& ended)
    : m_private(new Private{ended})
{
}

LineEditor::~LineEditor() = default;

std::optional<VoString> LineEditor::read(const VoString& prompt)
{
    const std::wstring shown = prompt.toQString().toStdWString();
    DWORD count = 0;
    WriteConsoleW(GetStdHandle(STD_OUTPUT_HANDLE), shown.c_str(), static_cast<DWORD>(shown.size()), &count, nullptr);
    std::wstring line;
    wchar_t block[1024];
    do {
        SetLastError(ERROR_SUCCESS);
        if (!ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), block, 1024, &count, nullptr) || m_private->ended.isStopped())
            return std::nullopt;
        if (count == 0)
            return GetLastError() == ERROR_OPERATION_ABORTED ? std::optional(VoString()) : std::nullopt; // Ctrl-C
        line.append(block, count);
    } while (line.back() != L'\n');
    line.erase(line.find_last_not_of(L"\r\n") + 1);
    if (!line.empty() && line.front() == L'\x1a') // Ctrl-Z, the end
        return std::nullopt;
    return VoString(QString::fromStdWString(line));
}

void LineEditor::remember(const VoString&) {}

} // namespace vo::tool
