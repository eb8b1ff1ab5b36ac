#pragma once

#include <Core/VoMatrix.h>

#include <algorithm>

#include <cstddef>
#include <type_traits>

/// A matrix of numbers with the scalar and row operations that elimination algorithms are written in.
template <typename T>
class VoNumericMatrix : public VoMatrix<T>
{
    static_assert(std::is_arithmetic_v<T>, "VoNumericMatrix holds numbers");

public:
    using VoMatrix<T>::VoMatrix;

    /// Multiplies every cell by `factor`.
    VoNumericMatrix& operator*=(T factor)
    {
        T* cells = this->data();
        for (std::size_t i = 0; i < this->rows() * this->columns(); ++i)
            cells[i] = static_cast<T>(cells[i] * factor);
        return *this;
    }

    /// Divides every cell by `divisor`, which must not be zero for integers.
    VoNumericMatrix& operator/=(T divisor)
    {
        T* cells = this->data();
        for (std::size_t i = 0; i < this->rows() * this->columns(); ++i)
            cells[i] = static_cast<T>(cells[i] / divisor);
        return *this;
    }

    /// Multiplies one row by `factor`.
    /// @throws VoIndexOutOfBoundsException
    void multiplyRow(std::size_t row, T factor)
    {
        this->requireRow(row);
        T* cells = this->rowData(row);
        for (std::size_t column = 0; column < this->columns(); ++column)
            cells[column] = static_cast<T>(cells[column] * factor);
    }

    /// Divides one row by `divisor`.
    /// @throws VoIndexOutOfBoundsException
    void divideRow(std::size_t row, T divisor)
    {
        this->requireRow(row);
        T* cells = this->rowData(row);
        for (std::size_t column = 0; column < this->columns(); ++column)
            cells[column] = static_cast<T>(cells[column] / divisor);
    }

    /// Adds `factor` times row `source` to row `target`.
    /// @throws VoIndexOutOfBoundsException
    void addScaledRow(std::size_t target, std::size_t source, T factor)
    {
        this->requireRow(target);
        this->requireRow(source);
        T* to = this->rowData(target);
        const T* from = this->rowData(source);
        for (std::size_t column = 0; column < this->columns(); ++column)
            to[column] = static_cast<T>(to[column] + factor * from[column]);
    }

    /// Exchanges two rows.
    /// @throws VoIndexOutOfBoundsException
    void swapRows(std::size_t a, std::size_t b)
    {
        this->requireRow(a);
        this->requireRow(b);
        if (a != b)
            std::swap_ranges(this->rowData(a), this->rowData(a) + this->columns(), this->rowData(b));
    }

    /// The matrix with rows and columns exchanged.
    VoNumericMatrix transposed() const
    {
        VoNumericMatrix result(this->columns(), this->rows());
        for (std::size_t row = 0; row < this->rows(); ++row)
            for (std::size_t column = 0; column < this->columns(); ++column)
                result(column, row) = (*this)(row, column);
        return result;
    }
};
