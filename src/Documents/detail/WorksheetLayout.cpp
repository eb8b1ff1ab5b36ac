#include <Documents/detail/WorksheetLayout.h>

#include <Core/VoException.h>

#include <algorithm>
#include <iterator>

namespace vo::detail {

namespace {

[[noreturn]] void ThrowOutside()
{
    throw VoInvalidCallException("Cell lies outside the limits of a worksheet");
}

// Whether a span, counted from a position, ends behind the last one.
bool EndsBehind(std::size_t last, std::size_t position, std::size_t span)
{
    return position > last || span > last - position + 1;
}

} // namespace

void WorksheetLayout::startRow()
{
    if (m_row == MaximumRow)
        ThrowOutside();
    ++m_row;
    m_column = 0;
    m_coveredTo = 0;
    m_nextAbove = 0;
    if (m_above.empty() && m_begun.empty())
        return;
    m_scratch.clear();
    std::merge(m_above.begin(), m_above.end(), m_begun.begin(), m_begun.end(), std::back_inserter(m_scratch),
               [](const Cover& a, const Cover& b) { return a.firstColumn < b.firstColumn; });
    m_scratch.erase(std::remove_if(m_scratch.begin(), m_scratch.end(),
                                   [this](const Cover& cover) { return cover.lastRow < m_row; }),
                    m_scratch.end());
    m_above.swap(m_scratch);
    m_begun.clear();
}

bool WorksheetLayout::isNextCovered() const noexcept
{
    const std::size_t next = nextColumn();
    return next <= m_coveredTo || (m_nextAbove < m_above.size() && m_above[m_nextAbove].firstColumn <= next);
}

void WorksheetLayout::place(std::size_t columnSpan, std::size_t rowSpan)
{
    const std::size_t column = nextColumn();
    std::size_t columns = std::max<std::size_t>(columnSpan, 1);
    const std::size_t rows = std::max<std::size_t>(rowSpan, 1);
    if (m_row == 0 || EndsBehind(MaximumColumn, column, columns) || EndsBehind(MaximumRow, m_row, rows))
        ThrowOutside();
    if (m_nextAbove < m_above.size())
        columns = std::min(columns, m_above[m_nextAbove].firstColumn - column);
    const std::size_t lastColumn = column + columns - 1;
    const std::size_t lastRow = m_row + rows - 1;
    if (columns > 1 || rows > 1)
        m_merges.push_back({static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(m_row),
                            static_cast<std::uint32_t>(lastColumn), static_cast<std::uint32_t>(lastRow)});
    if (rows > 1)
        m_begun.push_back({column, lastColumn, lastRow});
    m_lastRow = std::max(m_lastRow, lastRow);
    m_coveredTo = lastColumn;
    skip();
}

void WorksheetLayout::skip()
{
    ++m_column;
    while (m_nextAbove < m_above.size() && m_above[m_nextAbove].lastColumn < nextColumn())
        ++m_nextAbove;
}

} // namespace vo::detail
