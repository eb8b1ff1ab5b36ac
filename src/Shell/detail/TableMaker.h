#pragma once

#include <Documents/VoVariantTable.h>

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace vo::detail {

/// Rows of a table, gathered one by one; the first holds the names of the columns.
class TableMaker
{
public:
    explicit TableMaker(std::initializer_list<const char*> names)
        : m_columns(names.size())
        , m_cells(names.begin(), names.end())
    {
    }

    /// Adds a row, of as many cells as there are columns.
    void add(std::initializer_list<VoVariant> cells) { m_cells.insert(m_cells.end(), cells); }

    VoVariantTable finish() const
    {
        VoVariantTable table(m_cells.size() / m_columns, m_columns);
        table.forEach(
            [&](std::size_t row, std::size_t column, VoVariant& cell) { cell = m_cells[row * m_columns + column]; });
        return table;
    }

private:
    const std::size_t m_columns;
    std::vector<VoVariant> m_cells;
};

} // namespace vo::detail
