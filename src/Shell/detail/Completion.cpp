#include <Shell/detail/Completion.h>

#include <Application/VoGlobalValues.h>
#include <Core/VoException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Shell/detail/ShellInterpreter.h>
#include <Shell/detail/ShellLine.h>

#include <algorithm>
#include <utility>

namespace vo::detail {
namespace {

constexpr std::size_t MostFiles = 1000;
constexpr char NativeSeparator = static_cast<char>(std::filesystem::path::preferred_separator);

// Thrown to leave a walk over files.
class EnoughFiles
{
};

} // namespace

Completion::Completion(std::string typed, const ShellInterpreter& interpreter)
    : m_typed(std::move(typed))
    , m_interpreter(interpreter)
{
    const std::size_t firstEnd = m_typed.find_first_of(" \t", m_typed.find_first_not_of(" \t"));
    if (firstEnd != std::string::npos)
        m_first = m_typed.substr(0, firstEnd);
    m_first.erase(0, std::min(m_first.find_first_not_of(" \t"), m_first.size()));
    const std::size_t before = m_typed.find_last_of(" \t=[,\"'");
    m_start = before == std::string::npos ? 0 : before + 1;
    const std::size_t dollar = m_typed.rfind('$');
    if (dollar != std::string::npos && dollar >= m_start)
        m_start = dollar;
    m_word = m_typed.substr(m_start);
}

VoDeque<VoString> Completion::words() const
{
    if (!m_word.empty() && m_word.front() == '$')
        return values();
    if (m_first.empty())
        return functions();
    VoDeque<VoString> words = VoString(m_first) == "help" ? functions() : parameters();
    for (const VoString& file : files())
        words.pushBack(file);
    return words;
}

void Completion::addIfBegun(VoDeque<VoString>& words, const VoString& word) const
{
    if (word.size() >= m_word.size() && VoString(word.toStdString().substr(0, m_word.size())) == VoString(m_word))
        words.pushBack(word);
}

VoDeque<VoString> Completion::functions() const
{
    VoDeque<VoString> words;
    for (const ShellInterpreter::Statement& statement : m_interpreter.statements)
        addIfBegun(words, statement.name);
    for (const VoString& name : m_interpreter.functions.names())
        addIfBegun(words, name);
    std::sort(words.begin(), words.end());
    return words;
}

VoDeque<VoString> Completion::values() const
{
    VoDeque<VoString> words;
    addIfBegun(words, "$_");
    addIfBegun(words, "$_folder");
    for (const VoString& name : VoGlobalValues::Names())
        addIfBegun(words, "$" + name);
    return words;
}

VoDeque<VoString> Completion::parameters() const
{
    VoDeque<VoString> words;
    const auto function = m_interpreter.functions.find(VoString(m_first));
    const bool isWhole = m_start > 0 && (m_typed[m_start - 1] == ' ' || m_typed[m_start - 1] == '\t');
    if (function && isWhole) {
        for (const VoFunctionParameter& parameter : function->parameters)
            addIfBegun(words, parameter.name + "=");
    } else if (VoString(m_first) == "set" || VoString(m_first) == "reset") {
        for (const VoString& name : VoGlobalValues::Names())
            addIfBegun(words, name);
    }
    return words;
}

// What cannot be listed completes nothing: nobody has asked for an error yet.
VoDeque<VoString> Completion::files() const
{
    const std::size_t separator = m_word.find_last_of("/\\");
    const std::string folder = separator == std::string::npos ? std::string() : m_word.substr(0, separator + 1);
    const bool isInQuotes = m_start > 0 && (m_typed[m_start - 1] == '"' || m_typed[m_start - 1] == '\'');
    VoDeque<VoString> words;
    try {
        const VoFilePath where = m_interpreter.rooted(VoFilePath(VoString(folder.empty() ? ".\\" : folder)));
        VoFileSystem::ForEachFile(VoDirectoryPath::FromText(where.path()), false, true, [&](const VoFilePath& path) {
            if (words.size() == MostFiles)
                throw EnoughFiles();
            const std::filesystem::path native = ToNative(path);
            const bool isFolder = path.isDirectory();
            const std::string name = (isFolder ? native.parent_path() : native).filename().u8string();
            const VoString word(folder + name + (isFolder ? std::string(1, NativeSeparator) : std::string()));
            const std::size_t count = words.size();
            addIfBegun(words, word);
            if (words.size() > count && !isInQuotes)
                words.back() = QuotedShellWord(word);
        });
    } catch (const EnoughFiles&) {
    } catch (const VoException&) {
    }
    std::sort(words.begin(), words.end());
    return words;
}

} // namespace vo::detail
