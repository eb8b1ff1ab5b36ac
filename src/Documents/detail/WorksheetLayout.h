#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vo::detail {

/// Where the cells of a worksheet go when they come row by row without positions and some span several columns and
/// rows: the next free column, the positions that merged cells cover, and the ranges merged.
///
/// What is covered is kept as intervals of columns for the rows to come, so a merged range costs the same whatever its
/// size, and a sheet of any length needs memory for its ranges only.
class VOCORE_PRIVATE_EXPORT WorksheetLayout
{
public:
    static constexpr std::size_t MaximumRow = 1048576;
    static constexpr std::size_t MaximumColumn = 16384;

    /// A merged range; all inclusive, counted from 1.
    struct Range
    {
        std::uint32_t firstColumn;
        std::uint32_t firstRow;
        std::uint32_t lastColumn;
        std::uint32_t lastRow;
    };

    /// Goes to the next row.
    /// @throws VoInvalidCallException "Cell lies outside the limits of a worksheet" behind the last one
    void startRow();

    std::size_t row() const noexcept { return m_row; }                 ///< 0 before the first.
    std::size_t nextColumn() const noexcept { return m_column + 1; }   ///< The column of the next cell, from 1.
    bool isNextCovered() const noexcept;                               ///< Whether a merged cell covers it.
    bool rowsAreMissing() const noexcept { return m_lastRow > m_row; } ///< Whether merged cells reach below the row.

    /// Puts a cell into the next column, which is not covered. A span of 0 counts as 1; one that would run over covered
    /// positions is made shorter.
    /// @throws VoInvalidCallException as startRow() and changes nothing when the cell or its span lies outside of what
    /// a worksheet can have
    void place(std::size_t columnSpan, std::size_t rowSpan);
    void skip(); ///< Passes over the next column.

    const std::vector<Range>& merges() const noexcept { return m_merges; } ///< In order of creation.

private:
    // Columns that are covered in all rows down to one.
    struct Cover
    {
        std::size_t firstColumn;
        std::size_t lastColumn;
        std::size_t lastRow;
    };

    std::size_t m_row = 0;
    std::size_t m_column = 0;    // the last one used
    std::size_t m_coveredTo = 0; // the last column of the last cell placed in the row
    std::size_t m_lastRow = 0;   // that any range covers
    std::vector<Cover> m_above;  // by ranges of the rows above, by columns
    std::size_t m_nextAbove = 0; // the first of them that does not lie left of the next column
    std::vector<Cover> m_begun;  // by ranges that begin in this row, by columns
    std::vector<Cover> m_scratch;
    std::vector<Range> m_merges;
};

} // namespace vo::detail
