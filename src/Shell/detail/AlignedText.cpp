#include <Shell/detail/AlignedText.h>

#include <Core/VoPrintable.h>

#include <algorithm>

namespace vo::detail {
namespace {

std::size_t WidthOf(const std::string& text)
{
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isFirstByte));
}

} // namespace

void AlignedText::add(const VoString& text, bool isNumber)
{
    Cell cell{Printable(text).toStdString(), 0, isNumber};
    cell.width = WidthOf(cell.text);
    std::size_t& width = m_widths[m_cells.size() % m_widths.size()];
    width = std::max(width, cell.width);
    m_cells.push_back(std::move(cell));
}

VoString AlignedText::text() const
{
    std::string text;
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const Cell& cell = m_cells[i];
        const std::size_t column = i % m_widths.size();
        const std::string blanks(m_widths[column] - cell.width, ' ');
        if (column > 0)
            text += "  ";
        else if (i > 0)
            text += '\n';
        text += cell.isNumber ? blanks + cell.text : cell.text + blanks;
        if (column + 1 == m_widths.size())
            text.erase(text.find_last_not_of(' ') + 1);
    }
    return VoString(text);
}

} // namespace vo::detail
