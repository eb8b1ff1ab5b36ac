#include <Documents/detail/HTMLTable.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Core/detail/NumberText.h>
#include <Core/detail/UTF8.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoCSVValues.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/detail/CSVText.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace vo::detail {

namespace {

constexpr std::size_t MostBytes = std::size_t(256) << 20;
constexpr std::size_t MostCells = std::size_t(1) << 20;
constexpr std::size_t MostColumns = 16384;
constexpr std::size_t MostSpannedColumns = 1000; // as browsers have it
constexpr std::size_t MostSpannedRows = 65534;

// Marks a cell as text, whatever it looks like; office programs write and read it.
constexpr std::string_view TextMark = "mso-number-format:";

std::string TextOf(const VoVariant& value)
{
    if (value.isNull())
        return std::string();
    return value.type() == VoVariant::Double ? ShortestText(value.asDouble()) : value.toString().toStdString();
}

// A line break within a value must not look like the end of a value, and blanks must not run together.
std::string Cell(const VoVariant& value)
{
    const std::string text = TextOf(value);
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw VoOverflowException();
    QString cell = QString::fromUtf8(text.data(), static_cast<int>(text.size())).toHtmlEscaped();
    cell.replace(QLatin1String("  "), QLatin1String("&nbsp;&nbsp;"));
    if (cell.startsWith(QLatin1Char(' ')))
        cell.replace(0, 1, QLatin1String("&nbsp;"));
    if (cell.endsWith(QLatin1Char(' ')))
        cell.replace(cell.size() - 1, 1, QLatin1String("&nbsp;"));
    return cell.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QLatin1Char('\n'), QLatin1String("<br style=\"mso-data-placement:same-cell\">"))
        .replace(QLatin1Char('\t'), QLatin1String("&#9;"))
        .toStdString();
}

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsNameCharacter(char c)
{
    return (Lower(c) >= 'a' && Lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == ':';
}

bool IsBlankText(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), IsBlank);
}

bool LooksLikeAnother(const VoVariant& value)
{
    return value.type() == VoVariant::String &&
           (IsBlankText(value.asString().toStdString()) ||
            csv::DetectedType(value.asString().toStdString(), VoCSVFormat()) != VoVariant::String);
}

void AppendItem(std::string& html, const VoDataTableItem& item, std::size_t columnSpan, bool isHeader)
{
    const VoDeque<VoVariant>& values = item.values();
    html += isHeader ? "<th" : "<td";
    if (columnSpan > 1)
        html += " colspan=\"" + UnsignedText(columnSpan) + '"';
    if (!isHeader && std::any_of(values.begin(), values.end(), LooksLikeAnother))
        html.append(" style=\"").append(TextMark).append("'\\@'\"");
    html += '>';
    for (std::size_t i = 0; i < values.size(); ++i)
        html += (i > 0 ? "<br>" : "") + Cell(values[i]);
    html += isHeader ? "</th>" : "</td>";
}

std::string LowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
    return lower;
}

// What stands between "<" and ">"; of the attributes, those that say something about a table.
struct Tag
{
    std::string name; // lower case; with "/" in front at an end tag
    std::size_t columnSpan = 1;
    std::size_t rowSpan = 1;
    std::string number; // the exact value of a cell that shows a rounded one
    std::string style;
    std::string text; // what stands there where no tag begins: "<" is a character too
};

std::size_t Span(std::string_view text, std::size_t most)
{
    const std::size_t span = ParseSize(text);
    return std::clamp<std::size_t>(span, 1, most);
}

void Apply(Tag& tag, const std::string& attribute, std::string_view value)
{
    if (attribute == "colspan")
        tag.columnSpan = Span(value, MostSpannedColumns);
    else if (attribute == "rowspan")
        tag.rowSpan = Span(value, MostSpannedRows);
    else if (attribute == "sdval" || attribute == "x:num")
        tag.number = value;
    else if (attribute == "style")
        tag.style = LowerCase(value);
}

// Goes over a document once, from piece to piece.
class Scanner
{
public:
    explicit Scanner(std::string_view html)
        : m_html(html)
    {
    }

    bool atEnd() const { return m_at >= m_html.size(); }

    // The text up to the next "<".
    std::string_view text()
    {
        const std::size_t begin = m_at;
        m_at = std::min(m_html.find('<', m_at), m_html.size());
        return m_html.substr(begin, m_at - begin);
    }

    // The tag that begins here; without a name when there is a comment, or no tag.
    Tag tag()
    {
        Tag tag;
        if (startsWith("<!--"))
            skipPast("-->");
        else if (startsWith("<!") || startsWith("<?"))
            skipPast(">");
        else
            readTag(tag);
        return tag;
    }

    // Past the end tag of an element whose content is no markup.
    void skipElement(const std::string& name)
    {
        while (!atEnd()) {
            skipPast("</");
            if (LowerCase(m_html.substr(m_at, name.size())) == name)
                return skipPast(">");
        }
    }

private:
    bool startsWith(std::string_view text) const { return m_html.compare(m_at, text.size(), text) == 0; }

    char here() const { return atEnd() ? '\0' : m_html[m_at]; }

    void skipPast(std::string_view text)
    {
        const std::size_t found = m_html.find(text, m_at);
        m_at = found == std::string_view::npos ? m_html.size() : found + text.size();
    }

    template <typename Condition>
    std::string_view takeWhile(Condition condition)
    {
        const std::size_t begin = m_at;
        while (!atEnd() && condition(m_html[m_at]))
            ++m_at;
        return m_html.substr(begin, m_at - begin);
    }

    void readTag(Tag& tag)
    {
        ++m_at;
        const bool isEnd = here() == '/';
        if (isEnd)
            ++m_at;
        tag.name = LowerCase(takeWhile(IsNameCharacter));
        if (tag.name.empty()) {
            tag.text = isEnd ? "</" : "<";
            return;
        }
        if (isEnd)
            tag.name.insert(0, 1, '/');
        while (!atEnd() && here() != '>')
            readAttribute(tag);
        ++m_at;
    }

    void readAttribute(Tag& tag)
    {
        takeWhile([](char c) { return IsBlank(c) || c == '/'; });
        const std::string name =
            LowerCase(takeWhile([](char c) { return !IsBlank(c) && c != '=' && c != '>' && c != '/'; }));
        takeWhile(IsBlank);
        if (here() != '=')
            return;
        ++m_at;
        takeWhile(IsBlank);
        Apply(tag, name, attributeValue());
    }

    std::string_view attributeValue()
    {
        const char quote = here();
        if (quote != '"' && quote != '\'')
            return takeWhile([](char c) { return !IsBlank(c) && c != '>'; });
        ++m_at;
        const std::string_view value = takeWhile([quote](char c) { return c != quote; });
        ++m_at;
        return value;
    }

    std::string_view m_html;
    std::size_t m_at = 0;
};

// The characters of references by name that tables use.
struct Reference
{
    std::string_view name;
    char32_t code;
};

constexpr Reference References[] = {
    {"amp", '&'},      {"lt", '<'},      {"gt", '>'},       {"quot", '"'},      {"apos", '\''},     {"nbsp", 0xa0},
    {"deg", 0xb0},     {"plusmn", 0xb1}, {"micro", 0xb5},   {"middot", 0xb7},   {"times", 0xd7},    {"sup2", 0xb2},
    {"sup3", 0xb3},    {"frac12", 0xbd}, {"Omega", 0x3a9},  {"mu", 0x3bc},      {"pi", 0x3c0},      {"ndash", 0x2013},
    {"mdash", 0x2014}, {"euro", 0x20ac}, {"minus", 0x2212}, {"infin", 0x221e},  {"auml", 0xe4},     {"ouml", 0xf6},
    {"uuml", 0xfc},    {"szlig", 0xdf},  {"eacute", 0xe9},  {"hellip", 0x2026}, {"thinsp", 0x2009}, {"ohm", 0x3a9},
};

char32_t ScalarValue(long long code)
{
    constexpr char32_t replacement = 0xfffd;
    const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
    return code <= 0 || code > 0x10ffff || isSurrogate ? replacement : static_cast<char32_t>(code);
}

// The character of "#181", "#xb5" or "micro"; 0 when there is none.
char32_t Referred(std::string_view name)
{
    if (name.size() > 1 && name[0] == '#') {
        const bool isHex = name[1] == 'x' || name[1] == 'X';
        bool isNumber = false;
        const QByteArray digits(name.data() + (isHex ? 2 : 1), static_cast<int>(name.size()) - (isHex ? 2 : 1));
        const long long code = digits.toLongLong(&isNumber, isHex ? 16 : 10);
        return isNumber ? ScalarValue(code) : 0;
    }
    const auto* const found = std::find_if(std::begin(References), std::end(References),
                                           [&](const Reference& reference) { return reference.name == name; });
    return found == std::end(References) ? 0 : found->code;
}

// The values of the cell that is being read.
class CellText
{
public:
    void append(std::string_view text)
    {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '&')
                i += appendReference(text.substr(i)) - 1;
            else
                appendByte(text[i]);
        }
    }

    void lineBreak()
    {
        m_values.back() += '\n';
        m_blank = false;
    }

    void nextValue()
    {
        m_values.emplace_back();
        m_blank = false;
    }

    VoDeque<VoVariant> values(const Tag& tag, bool isHeader) const
    {
        VoDeque<VoVariant> values;
        for (const std::string& text : m_values)
            values.pushBack(value(text, tag, isHeader));
        return values;
    }

private:
    // Blanks count as one, and not at the beginning.
    void appendByte(char c)
    {
        if (IsBlank(c))
            m_blank = !m_values.back().empty();
        else if (static_cast<unsigned char>(c) >= 0x20)
            add(std::string_view(&c, 1));
    }

    // Returns how many bytes were taken.
    std::size_t appendReference(std::string_view text)
    {
        constexpr std::size_t longest = 12;
        const std::size_t end = text.substr(0, longest).find(';');
        const char32_t code = end == std::string_view::npos ? 0 : Referred(text.substr(1, end - 1));
        if (code == 0) {
            appendByte('&');
            return 1;
        }
        constexpr char32_t hardBlank = 0xa0;
        std::string character;
        AppendUTF8(character, code == hardBlank ? U' ' : code);
        if (code >= 0x20 || code == '\t')
            add(character);
        return end + 1;
    }

    void add(std::string_view character)
    {
        if (std::exchange(m_blank, false) && m_values.back().back() != '\n')
            m_values.back() += ' ';
        m_values.back() += character;
    }

    VoVariant value(const std::string& text, const Tag& tag, bool isHeader) const
    {
        std::string_view trimmed(text); // of what markup adds: blanks that count stay
        trimmed.remove_suffix(trimmed.size() - 1 - trimmed.find_last_not_of('\n'));
        trimmed.remove_prefix(std::min(trimmed.find_first_not_of('\n'), trimmed.size()));
        VoString string(trimmed.data(), trimmed.size());
        if (tag.style.find(TextMark) != std::string::npos)
            return string;
        if (IsBlankText(trimmed)) // as office programs fill cells that are empty
            return VoVariant();
        if (isHeader)
            return string;
        const bool isRounded = m_values.size() == 1 && !tag.number.empty();
        return csv::DetectedValue(isRounded ? std::string_view(tag.number) : trimmed, VoCSVFormat());
    }

    std::vector<std::string> m_values = {std::string()};
    bool m_blank = false;
};

// Makes the table of the tags that come.
class TableBuilder
{
public:
    bool hasCells() const { return m_cells > 0; }

    void beginRow()
    {
        endRow();
        m_inRow = true;
    }

    void beginCell(Tag tag)
    {
        if (!m_inRow)
            beginRow();
        endCell();
        m_cell.emplace();
        m_tag = std::move(tag);
    }

    CellText* cell() { return m_cell ? &*m_cell : nullptr; }

    void endCell()
    {
        if (!m_cell)
            return;
        fillCovered();
        const bool isHeader = m_tag.name == "th";
        (isHeader ? m_hasHeaders : m_hasData) = true;
        cover(m_tag.columnSpan, m_tag.rowSpan);
        m_items.pushBack(VoDataTableItem(m_cell->values(m_tag, isHeader), m_tag.columnSpan));
        m_cell.reset();
    }

    void endRow()
    {
        endCell();
        if (!std::exchange(m_inRow, false))
            return;
        fillCovered();
        ++m_row;
        if (!m_items.isEmpty())
            m_table.addRow(m_items, m_hasHeaders && !m_hasData ? VoDataTable::Header : VoDataTable::Data);
        m_items = VoDeque<VoDataTableItem>();
        m_column = 0;
        m_hasHeaders = false;
        m_hasData = false;
    }

    VoDataTable take() { return std::move(m_table); }

private:
    void cover(std::size_t columns, std::size_t rows)
    {
        count();
        if (m_column + columns > MostColumns)
            throw VoInvalidConversionException("HTML table is too large");
        m_covered.resize(std::max(m_covered.size(), m_column + columns));
        for (std::size_t i = 0; i < columns; ++i)
            m_covered[m_column++] = m_row + rows;
    }

    // An empty cell where those of rows above reach down.
    void fillCovered()
    {
        const std::size_t begin = m_column;
        while (m_column < m_covered.size() && m_covered[m_column] > m_row)
            ++m_column;
        if (m_column == begin)
            return;
        count();
        m_items.pushBack(VoDataTableItem(VoVariant(), m_column - begin));
    }

    void count()
    {
        if (++m_cells > MostCells)
            throw VoInvalidConversionException("HTML table is too large");
    }

    VoDataTable m_table;
    VoDeque<VoDataTableItem> m_items;
    std::optional<CellText> m_cell;
    Tag m_tag;
    std::vector<std::size_t> m_covered; // for each column, the first row that is not covered any more
    std::size_t m_row = 0;
    std::size_t m_column = 0;
    std::size_t m_cells = 0;
    bool m_inRow = false;
    bool m_hasHeaders = false;
    bool m_hasData = false;
};

bool IsOneOf(const std::string& name, std::initializer_list<std::string_view> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Markup within a cell.
void ApplyInCell(CellText& cell, const Tag& tag)
{
    if (tag.name == "br" && tag.style.find("same-cell") == std::string::npos)
        cell.nextValue();
    else if (IsOneOf(tag.name, {"br", "/p", "/div", "/li", "/tr", "/table"}))
        cell.lineBreak();
    else if (IsOneOf(tag.name, {"td", "th", "/td", "/th"})) // of a table within
        cell.append(" ");
    else
        cell.append(tag.text);
}

void ApplyInTable(TableBuilder& table, Tag tag)
{
    if (tag.name == "tr")
        table.beginRow();
    else if (IsOneOf(tag.name, {"td", "th"}))
        table.beginCell(std::move(tag));
    else if (IsOneOf(tag.name, {"/td", "/th"}))
        table.endCell();
    else if (IsOneOf(tag.name, {"/tr", "thead", "tbody", "tfoot", "/thead", "/tbody", "/tfoot"}))
        table.endRow();
    else if (CellText* const cell = table.cell())
        ApplyInCell(*cell, tag);
}

bool IsRaw(const std::string& name)
{
    return IsOneOf(name, {"script", "style", "title", "textarea", "iframe", "noscript", "template", "xmp"});
}

} // namespace

std::string TableToHTML(const VoDataTable& table)
{
    std::string html = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"></head><body>\n<table>\n";
    for (std::size_t row = 0; row < table.numberRows(); ++row) {
        html += "<tr>";
        table.forEachItem(row, [&](const VoDataTableItem& item, std::size_t, std::size_t columnSpan) {
            AppendItem(html, item, columnSpan, table.isHeader(row));
        });
        html += "</tr>\n";
    }
    return html += "</table>\n</body></html>\n";
}

std::optional<VoDataTable> TableFromHTML(std::string_view html)
{
    if (html.size() > MostBytes)
        throw VoInvalidConversionException("HTML table is too large");
    Scanner scanner(html);
    TableBuilder table;
    std::size_t depth = 0; // of tables in tables
    while (!scanner.atEnd()) {
        const std::string_view text = scanner.text();
        if (CellText* const cell = table.cell())
            cell->append(text);
        if (scanner.atEnd())
            break;
        Tag tag = scanner.tag();
        if (IsRaw(tag.name))
            scanner.skipElement(tag.name);
        depth += tag.name == "table" ? 1 : 0;
        depth -= tag.name == "/table" && depth > 0 ? 1 : 0;
        if (depth == 0) {
            table.endRow();
            if (table.hasCells())
                break;
        } else if (depth == 1 && tag.name != "/table") {
            ApplyInTable(table, std::move(tag));
        } else if (CellText* const cell = table.cell()) {
            ApplyInCell(*cell, tag);
        }
    }
    table.endRow();
    return table.hasCells() ? std::optional(table.take()) : std::nullopt;
}

} // namespace vo::detail
