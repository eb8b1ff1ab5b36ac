#include <FileSystem/detail/SafePath.h>

#include <Core/VoString.h>
#include <Core/detail/Escapes.h>
#include <FileSystem/VoFilePath.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace vo::detail {

namespace {

constexpr std::size_t MaximumNameLength = 128;

constexpr char UpperCase(char c) noexcept
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return UpperCase(x) == UpperCase(y); });
}

bool IsBlankOrDot(char c) noexcept
{
    return c == ' ' || c == '.';
}

// The port number of "COM1" or "LPT1": a digit from 1 on, or one of the superscripts that count as such.
bool IsPortNumber(std::string_view text) noexcept
{
    if (text.size() == 1)
        return text[0] >= '1' && text[0] <= '9';
    return text == "\xC2\xB9" || text == "\xC2\xB2" || text == "\xC2\xB3";
}

// Names that some systems take for a device whatever their extension.
bool NamesDevice(std::string_view piece) noexcept
{
    static constexpr std::array<std::string_view, 7> devices = {"CON",    "PRN",     "AUX",   "NUL",
                                                                "CONIN$", "CONOUT$", "CLOCK$"};
    std::string_view stem = piece.substr(0, piece.find('.'));
    while (!stem.empty() && stem.back() == ' ')
        stem.remove_suffix(1);
    if (std::any_of(devices.begin(), devices.end(),
                    [&](std::string_view device) { return EqualIgnoringCase(stem, device); }))
        return true;
    const std::string_view port = stem.substr(0, 3);
    return (EqualIgnoringCase(port, "COM") || EqualIgnoringCase(port, "LPT")) && IsPortNumber(stem.substr(port.size()));
}

const char* PieceProblem(std::string_view piece) noexcept
{
    if (piece.empty())
        return "a name in it is empty";
    if (IsBlankOrDot(piece.back()))
        return "a name in it ends with a dot or a blank";
    return NamesDevice(piece) ? "a name in it is that of a device" : nullptr;
}

} // namespace

bool SafeName(std::string_view name) noexcept
{
    static constexpr std::string_view forbidden = "\\/:*?\"<>|";
    if (name.size() > MaximumNameLength || PieceProblem(name) || IsBlankOrDot(name.front()))
        return false;
    if (std::any_of(name.begin(), name.end(), IsControl) || name.find_first_of(forbidden) != std::string_view::npos)
        return false;
    return !EqualIgnoringCase(name, "packages");
}

bool SafeName(const VoString& name) noexcept
{
    return SafeName(std::string_view(name.toStdString()));
}

const char* RelativePathProblem(std::string_view path) noexcept
{
    if (path.size() > VoFilePath::MaximumLength)
        return "it is longer than 260 bytes";
    // An empty path, a root and a separator at either end all show as an empty piece.
    std::size_t start = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const char c = path[i];
        if (c == ':')
            return "it holds a colon";
        if (IsControl(c))
            return "it holds a control character";
        if (c != '\\' && c != '/')
            continue;
        if (const char* problem = PieceProblem(path.substr(start, i - start)))
            return problem;
        start = i + 1;
    }
    return PieceProblem(path.substr(start));
}

bool SafeRelativePath(std::string_view path) noexcept
{
    return RelativePathProblem(path) == nullptr;
}

bool SafeRelativePath(const VoString& path) noexcept
{
    return SafeRelativePath(std::string_view(path.toStdString()));
}

bool SafeRelativePath(const VoFilePath& path) noexcept
{
    return SafeRelativePath(path.path());
}

} // namespace vo::detail
