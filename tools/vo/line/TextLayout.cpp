#include <vo/line/TextLayout.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace vo::tool {
namespace {

constexpr std::size_t WidestLeftColumn = 34;
constexpr std::size_t NarrowestText = 24; // what is left on a narrow terminal may be cut by it, but can be read

/// The next word of a paragraph, taken off the text: to the next blank that stands in no brackets, unless that is
/// further than a line is long.
std::string_view TakeWord(std::string_view& text, std::size_t longest)
{
    std::size_t end = 0;
    for (std::size_t depth = 0; end < text.size() && (text[end] != ' ' || depth > 0); ++end) {
        depth += text[end] == '[' ? 1 : 0;
        depth -= text[end] == ']' && depth > 0 ? 1 : 0;
    }
    if (end > longest)
        end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(text.size(), end + 1));
    return word;
}

/// Lines of words, each of which ends with a line end.
class Lines
{
public:
    Lines(std::size_t width, const VoString& first, std::size_t indent)
        : m_width(std::max(width, indent + NarrowestText))
        , m_indent(indent)
        , m_line(first.toStdString())
        , m_begin(m_line.size())
    {
    }

    void paragraph(std::string_view text)
    {
        while (!text.empty())
            word(TakeWord(text, m_width - m_indent));
        endLine();
    }

    void emptyLine() { m_text += '\n'; }

    VoString take() { return VoString(std::move(m_text)); }

private:
    void word(std::string_view word)
    {
        const std::size_t blank = m_line.size() > m_begin ? 1 : 0;
        if (m_line.size() > m_begin && m_line.size() + blank + word.size() > m_width)
            endLine();
        if (m_line.size() > m_begin)
            m_line += ' ';
        m_line += word;
    }

    void endLine()
    {
        m_text += m_line.substr(0, m_line.find_last_not_of(' ') + 1) + '\n';
        m_line.assign(m_indent, ' ');
        m_begin = m_indent;
    }

    const std::size_t m_width;
    const std::size_t m_indent;
    std::string m_line;
    std::size_t m_begin; // where the line's words begin
    std::string m_text;
};

} // namespace

VoString Wrapped(const VoString& text, std::size_t width, const VoString& first, std::size_t indent)
{
    Lines lines(width, first, indent);
    std::string_view rest = text.toStdStringView();
    while (!rest.empty() && rest.back() == '\n')
        rest.remove_suffix(1);
    for (;;) {
        const std::size_t end = rest.find("\n\n");
        std::string paragraph(rest.substr(0, end));
        std::replace(paragraph.begin(), paragraph.end(), '\n', ' ');
        lines.paragraph(paragraph);
        if (end == std::string_view::npos)
            return lines.take();
        lines.emptyLine();
        rest.remove_prefix(end + 2);
    }
}

VoString TwoColumns(const TextRows& rows, std::size_t width)
{
    std::size_t left = 0;
    for (const auto& row : rows) {
        if (row.first.size() <= WidestLeftColumn)
            left = std::max(left, row.first.size());
    }
    const std::size_t indent = left + 4;
    VoString text;
    for (const auto& [name, meaning] : rows) {
        VoString begin = "  " + name;
        if (name.size() > left) {
            text += begin + "\n";
            begin = VoString();
        }
        begin.resize(indent, ' ');
        text += Wrapped(meaning, width, begin, indent);
    }
    return text;
}

} // namespace vo::tool
