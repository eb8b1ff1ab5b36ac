#pragma once

#include <Core/VoRef.h>
#include <Core/VoThrow.h>
#include <Core/VoVector.h>

#include <cstddef>
#include <initializer_list>
#include <limits>
#include <utility>

/// A matrix of fixed shape in one contiguous, row-major block.
template <typename T>
class VoMatrix
{
public:
    /// No rows and no columns.
    VoMatrix() = default;

    /// @p rows by @p columns copies of @p fill. Throws VoOverflowException when their product cannot be counted.
    VoMatrix(std::size_t rows, std::size_t columns, const T& fill = T())
        : m_rows(rows)
        , m_columns(columns)
        , m_cells(cellCount(rows, columns), fill)
    {
    }

    std::size_t rows() const noexcept { return m_rows; }        ///< Number of rows.
    std::size_t columns() const noexcept { return m_columns; }  ///< Number of columns.
    bool isEmpty() const noexcept { return m_cells.isEmpty(); } ///< True without cells.

    /// The cell, unchecked.
    T& operator()(std::size_t row, std::size_t column) noexcept { return m_cells.data()[row * m_columns + column]; }
    /// The cell, unchecked.
    const T& operator()(std::size_t row, std::size_t column) const noexcept
    {
        return m_cells.data()[row * m_columns + column];
    }

    /// The cell. Throws VoIndexOutOfBoundsException with the offending index and its bound.
    T& at(std::size_t row, std::size_t column)
    {
        requireRow(row);
        requireColumn(column);
        return (*this)(row, column);
    }
    /// @copydoc at(std::size_t, std::size_t)
    const T& at(std::size_t row, std::size_t column) const
    {
        requireRow(row);
        requireColumn(column);
        return (*this)(row, column);
    }

    T* rowData(std::size_t row) noexcept
    {
        return m_cells.data() + row * m_columns;
    } ///< First cell of a row, unchecked.
    const T* rowData(std::size_t row) const noexcept
    {
        return m_cells.data() + row * m_columns;
    }                                                         ///< First cell of a row, unchecked.
    T* data() noexcept { return m_cells.data(); }             ///< All cells, row by row.
    const T* data() const noexcept { return m_cells.data(); } ///< All cells, row by row.

    /// References to the cells of one row. Throws VoIndexOutOfBoundsException.
    VoVector<VoRef<T>> row(std::size_t row)
    {
        requireRow(row);
        VoVector<VoRef<T>> cells;
        cells.reserve(m_columns);
        for (std::size_t column = 0; column < m_columns; ++column)
            cells.pushBack((*this)(row, column));
        return cells;
    }

    /// References to the cells of one column. Throws VoIndexOutOfBoundsException.
    VoVector<VoRef<T>> column(std::size_t column)
    {
        requireColumn(column);
        VoVector<VoRef<T>> cells;
        cells.reserve(m_rows);
        for (std::size_t row = 0; row < m_rows; ++row)
            cells.pushBack((*this)(row, column));
        return cells;
    }

    /// Same shape and equal cells.
    friend bool operator==(const VoMatrix& a, const VoMatrix& b)
    {
        return a.m_rows == b.m_rows && a.m_columns == b.m_columns && a.m_cells == b.m_cells;
    }
    /// Another shape or some cell differs.
    friend bool operator!=(const VoMatrix& a, const VoMatrix& b) { return !(a == b); }

protected:
    /// Throws VoIndexOutOfBoundsException(@p row, rows()) for a row that is not there.
    void requireRow(std::size_t row) const
    {
        if (row >= m_rows)
            vo::detail::ThrowIndexOutOfBounds(row, m_rows);
    }

    /// Throws VoIndexOutOfBoundsException(@p column, columns()) for a column that is not there.
    void requireColumn(std::size_t column) const
    {
        if (column >= m_columns)
            vo::detail::ThrowIndexOutOfBounds(column, m_columns);
    }

private:
    static std::size_t cellCount(std::size_t rows, std::size_t columns)
    {
        if (columns != 0 && rows > std::numeric_limits<std::size_t>::max() / sizeof(T) / columns)
            vo::detail::ThrowOverflow();
        return rows * columns;
    }

    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
    VoVector<T> m_cells;
};
