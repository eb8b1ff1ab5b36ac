#include <vo/screen/TableView.h>

#include <vo/line/Values.h>

#include <Core/VoVariant.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVValues.h>

#include <QtCore/QString>

#include <algorithm>
#include <string>
#include <string_view>

namespace vo::tool {
namespace {

const std::string Gap = "  ";

struct Cell
{
    std::string text;
    std::size_t width; ///< In characters.
};

bool IsContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

std::size_t WidthOf(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

Cell Shown(std::string_view field, std::size_t widest)
{
    // More bytes than can be shown are not looked at: a field may be as large as the file.
    std::string text = Printable(VoString(field.data(), std::min(field.size(), widest * 4 + 4))).toStdString();
    const std::size_t width = WidthOf(text);
    if (width <= widest)
        return {std::move(text), width};
    std::size_t end = 0;
    for (std::size_t characters = 0; characters + 1 < widest || IsContinuation(text[end]); ++end)
        characters += IsContinuation(text[end]) ? 0 : 1;
    text.resize(end);
    return {text + "\xe2\x80\xa6", WidthOf(text) + 1};
}

} // namespace

TableView::TableView(const VoCSVFormat& format, std::size_t widest)
    : m_format(format)
    , m_widest(widest)
{
}

bool TableView::isNumber(const VoCSVReader& row, std::size_t index) const
{
    const VoVariant::Type type = csv::DetectedType(row.field(index), m_format);
    return !row.isQuoted(index) && (type == VoVariant::Integer || type == VoVariant::Double);
}

void TableView::measure(const VoCSVReader& row, bool isHeader)
{
    if (m_columns.size() < row.numberFields())
        m_columns.resize(row.numberFields());
    for (std::size_t i = 0; i < row.numberFields(); ++i) {
        Column& column = m_columns[i];
        column.width = std::max(column.width, Shown(row.field(i), m_widest).width);
        if (isHeader || row.field(i).empty())
            continue;
        (isNumber(row, i) ? column.hasNumbers : column.hasTexts) = true;
    }
}

VoString TableView::line(const VoCSVReader& row) const
{
    std::string line;
    for (std::size_t i = 0; i < row.numberFields() && i < m_columns.size(); ++i) {
        const Column& column = m_columns[i];
        const Cell cell = Shown(row.field(i), m_widest);
        const std::string blanks(column.width - std::min(cell.width, column.width), ' ');
        if (i > 0)
            line += Gap;
        line += column.hasNumbers && !column.hasTexts ? blanks + cell.text : cell.text + blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return VoString(line);
}

VoString TableView::rule() const
{
    std::string line;
    for (const Column& column : m_columns)
        line += (line.empty() ? "" : Gap) + std::string(column.width, '-');
    return VoString(line);
}

std::vector<double> TableView::widths() const
{
    std::vector<double> widths;
    for (const Column& column : m_columns)
        widths.push_back(static_cast<double>(column.width));
    return widths;
}

} // namespace vo::tool
