#include <Shell/detail/ShellLine.h>

#include <Application/VoValueDefinition.h>
#include <Core/VoException.h>

#include <algorithm>
#include <string>

namespace vo::detail {
namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

class Parser
{
public:
    explicit Parser(const std::string& line)
        : m_line(line)
    {
    }

    std::vector<ShellWord> words()
    {
        std::vector<ShellWord> words;
        for (skip(false); !atEnd() && peek() != '#'; skip(false))
            words.push_back(peek() == '[' ? list() : word(false));
        return words;
    }

private:
    bool atEnd() const { return m_next == m_line.size(); }
    char peek() const { return m_line[m_next]; }

    // The first character of a line has column 1; what continues a character has none of its own. Asked for in rising
    // order, but for errors.
    std::size_t column(std::size_t offset) const
    {
        if (offset < m_countedTo)
            m_countedTo = m_characters = 0;
        for (; m_countedTo < offset; ++m_countedTo)
            m_characters += (static_cast<unsigned char>(m_line[m_countedTo]) & 0xc0) != 0x80 ? 1 : 0;
        return m_characters + 1;
    }

    [[noreturn]] void refuse(const char* what, std::size_t offset) const
    {
        throw VoInvalidParameterException(VoString(what) + " is not closed, at column " + VoString(column(offset)));
    }

    void skip(bool commas)
    {
        while (!atEnd() && (IsBlank(peek()) || (commas && peek() == ',')))
            ++m_next;
    }

    ShellWord list()
    {
        ShellWord list = begun();
        list.isList = true;
        readItems(list);
        return list;
    }

    void readItems(ShellWord& list)
    {
        const std::size_t start = m_next++;
        for (skip(true); !atEnd() && peek() != ']'; skip(true))
            list.items.push_back(word(true));
        if (atEnd())
            refuse("List", start);
        ++m_next;
    }

    ShellWord begun() const
    {
        ShellWord word;
        word.offset = m_next;
        word.column = column(m_next);
        return word;
    }

    bool endsWord(bool inList) const
    {
        return atEnd() || IsBlank(peek()) || (inList && (peek() == ',' || peek() == ']'));
    }

    ShellWord word(bool inList)
    {
        ShellWord word = begun();
        while (!endsWord(inList)) {
            if (peek() == '"' || peek() == '\'')
                quoted(word, peek());
            else if (peek() == '$')
                value(word);
            else if (peek() == '=' && !inList && isNameSoFar(word))
                named(word);
            else
                append(word, m_line[m_next++]);
        }
        return word;
    }

    static bool isNameSoFar(const ShellWord& word)
    {
        return !word.isQuoted && word.name.isEmpty() && word.pieces.size() == 1 && !word.pieces[0].isValue &&
               VoValueDefinition::IsValidName(word.pieces[0].text);
    }

    void named(ShellWord& word)
    {
        ++m_next;
        word.name = std::move(word.pieces[0].text);
        word.pieces.clear();
        word.column = column(m_next);
        if (!atEnd() && peek() == '[') {
            word.isList = true;
            readItems(word);
        }
    }

    static void append(ShellWord& word, char c)
    {
        if (word.pieces.empty() || word.pieces.back().isValue)
            word.pieces.push_back({VoString(), false});
        word.pieces.back().text += c;
    }

    void quoted(ShellWord& word, char quote)
    {
        const std::size_t start = m_next++;
        word.isQuoted = true;
        for (;; ++m_next) {
            if (atEnd())
                refuse("Quote", start);
            if (peek() == quote) {
                ++m_next;
                if (quote == '\'' || atEnd() || peek() != quote)
                    return;
            }
            if (quote == '"' && peek() == '$') {
                value(word);
                --m_next;
                continue;
            }
            append(word, peek());
        }
    }

    void value(ShellWord& word)
    {
        const std::size_t start = m_next++;
        if (!atEnd() && peek() == '{') {
            const std::size_t end = m_line.find('}', m_next);
            if (end == std::string::npos)
                refuse("Value", start);
            word.pieces.push_back({VoString(m_line.substr(m_next + 1, end - m_next - 1)), true});
            m_next = end + 1;
            return;
        }
        const std::size_t end = endOfName();
        if (end > m_next)
            word.pieces.push_back({VoString(m_line.substr(m_next, end - m_next)), true});
        else
            append(word, '$'); // also of "$$", whose second sign is passed over
        m_next = end + (end == m_next && !atEnd() && peek() == '$' ? 1 : 0);
    }

    // A name is a letter or "_" and what follows it; dots and dashes at its end belong to the text around.
    std::size_t endOfName() const
    {
        std::size_t end = m_next;
        if (atEnd() || !(VoString::IsLetter(peek()) || peek() == '_'))
            return end;
        while (end < m_line.size() && IsShellNameCharacter(m_line[end]))
            ++end;
        while (m_line[end - 1] == '.' || m_line[end - 1] == '-')
            --end;
        return end;
    }

    const std::string& m_line;
    std::size_t m_next = 0;
    mutable std::size_t m_countedTo = 0;
    mutable std::size_t m_characters = 0;
};

} // namespace

std::vector<ShellWord> ParseShellLine(const VoString& line)
{
    return Parser(line.toStdString()).words();
}

bool IsShellNameCharacter(char c)
{
    return VoString::IsLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
}

VoString QuotedShellWord(const VoString& text)
{
    const auto isPlain = [](char c) {
        return IsShellNameCharacter(c) || c == '/' || c == '\\' || c == ':' || c == '+' || c == '~' || c == '%' ||
               c == '@' || (static_cast<unsigned char>(c) & 0x80) != 0;
    };
    if (!text.isEmpty() && std::all_of(text.begin(), text.end(), isPlain))
        return text;
    VoString quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '$')
            quoted += c;
        quoted += c;
    }
    return quoted + "\"";
}

} // namespace vo::detail
