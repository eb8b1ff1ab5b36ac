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

    /// `rows` by `columns` copies of `fill`.
    /// @throws VoOverflowException when their product cannot be counted
    /// @throws VoBadAllocException when there is no memory for them
    VoMatrix(std::size_t rows, std::size_t columns, const T& fill = T())
        : m_rows(rows)
        , m_columns(columns)
        , m_cells(cellCount(rows, columns), fill)
    {
    }

    VoMatrix(const VoMatrix& other) = default; ///< The same cells.
    /// Takes the cells; `other` has no rows and no columns afterwards.
    VoMatrix(VoMatrix&& other) noexcept { swap(other); }
    /// The same cells; unchanged when copying them fails.
    VoMatrix& operator=(const VoMatrix& other)
    {
        if (this != &other)
            *this = VoMatrix(other);
        return *this;
    }
    /// Takes the cells; `other` has no rows and no columns afterwards.
    VoMatrix& operator=(VoMatrix&& other) noexcept
    {
        VoMatrix taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~VoMatrix() = default;

    /// Exchanges shapes and cells.
    void swap(VoMatrix& other) noexcept
    {
        std::swap(m_rows, other.m_rows);
        std::swap(m_columns, other.m_columns);
        m_cells.swap(other.m_cells);
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

    /// The cell.
    /// @throws VoIndexOutOfBoundsException with the offending index and its bound
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

    T* begin() noexcept { return data(); }                            ///< First cell of all, row by row.
    T* end() noexcept { return data() + m_cells.size(); }             ///< Past the last cell.
    const T* begin() const noexcept { return data(); }                ///< First cell of all, row by row.
    const T* end() const noexcept { return data() + m_cells.size(); } ///< Past the last cell.

    /// References to the cells of one row.
    /// @throws VoIndexOutOfBoundsException
    VoVector<VoRef<T>> row(std::size_t row) { return rowOf<VoRef<T>>(*this, row); }
    /// @copydoc row(std::size_t)
    VoVector<VoCRef<T>> row(std::size_t row) const { return rowOf<VoCRef<T>>(*this, row); }

    /// References to the cells of one column.
    /// @throws VoIndexOutOfBoundsException
    VoVector<VoRef<T>> column(std::size_t column) { return columnOf<VoRef<T>>(*this, column); }
    /// @copydoc column(std::size_t)
    VoVector<VoCRef<T>> column(std::size_t column) const { return columnOf<VoCRef<T>>(*this, column); }

    /// Same shape and equal cells.
    friend bool operator==(const VoMatrix& a, const VoMatrix& b)
    {
        return a.m_rows == b.m_rows && a.m_columns == b.m_columns && a.m_cells == b.m_cells;
    }
    /// Another shape or some cell differs.
    friend bool operator!=(const VoMatrix& a, const VoMatrix& b) { return !(a == b); }

protected:
    /// @throws VoIndexOutOfBoundsException (`row`, rows()) for a row that is not there
    void requireRow(std::size_t row) const
    {
        if (row >= m_rows)
            vo::detail::ThrowIndexOutOfBounds(row, m_rows);
    }

    /// @throws VoIndexOutOfBoundsException (`column`, columns()) for a column that is not there
    void requireColumn(std::size_t column) const
    {
        if (column >= m_columns)
            vo::detail::ThrowIndexOutOfBounds(column, m_columns);
    }

private:
    static std::size_t cellCount(std::size_t rows, std::size_t columns)
    {
        constexpr std::size_t most = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T);
        if (columns != 0 && rows > most / columns)
            vo::detail::ThrowOverflow();
        return rows * columns;
    }

    template <typename Ref, typename Matrix>
    static VoVector<Ref> rowOf(Matrix& matrix, std::size_t row)
    {
        matrix.requireRow(row);
        VoVector<Ref> cells;
        cells.reserve(matrix.m_columns);
        for (std::size_t column = 0; column < matrix.m_columns; ++column)
            cells.pushBack(matrix(row, column));
        return cells;
    }

    template <typename Ref, typename Matrix>
    static VoVector<Ref> columnOf(Matrix& matrix, std::size_t column)
    {
        matrix.requireColumn(column);
        VoVector<Ref> cells;
        cells.reserve(matrix.m_rows);
        for (std::size_t row = 0; row < matrix.m_rows; ++row)
            cells.pushBack(matrix(row, column));
        return cells;
    }

    std::size_t m_rows = 0;
    std::size_t m_columns = 0;
    VoVector<T> m_cells;
};

/// Exchanges shapes and cells.
template <typename T>
void swap(VoMatrix<T>& a, VoMatrix<T>& b) noexcept
{
    a.swap(b);
}
