#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace vo::test {

/// The simplex method once more, written as plainly as possible: every cell of every row is computed in every step.
class ReferenceSimplex
{
public:
    using Row = std::vector<double>;

    ReferenceSimplex(std::size_t parameters, std::size_t constraints)
        : m_parameters(parameters)
        , m_constraints(constraints)
        , m_rows(constraints + 1, Row(parameters + constraints + 2, 0.0))
    {
        for (std::size_t r = 0; r <= constraints; ++r)
            m_rows[r][parameters + r] = 1.0;
    }

    double& cell(std::size_t row, std::size_t column) { return m_rows[row][column]; }
    double& rightHandSide(std::size_t row) { return m_rows[row].back(); }
    Row& objective() { return m_rows.back(); }
    const std::vector<Row>& rows() const { return m_rows; }

    bool found() const
    {
        for (std::size_t c = 0; c < m_parameters + m_constraints; ++c)
            if (m_rows.back()[c] < 0.0)
                return false;
        return true;
    }

    /// Whether a step was made although a constraint's row had a ratio of exactly zero over an entry above it.
    bool zeroRatioPassedOver() const { return m_zeroRatioPassedOver; }

    /// One step; false when no row can be chosen.
    bool step()
    {
        std::size_t column = 0;
        for (std::size_t c = 1; c < m_parameters + m_constraints; ++c)
            if (m_rows.back()[c] < m_rows.back()[column])
                column = c;

        std::optional<std::size_t> row;
        bool zero = false;
        for (std::size_t r = 0; r <= m_constraints; ++r) {
            zero =
                zero || (r < m_constraints && m_rows[r][column] > 0.0 && m_rows[r].back() / m_rows[r][column] == 0.0);
            if (m_rows[r][column] == 0.0 || !(m_rows[r].back() / m_rows[r][column] > 0.0))
                continue;
            if (!row || m_rows[r].back() / m_rows[r][column] < m_rows[*row].back() / m_rows[*row][column])
                row = r;
        }
        if (!row)
            return false;
        m_zeroRatioPassedOver = m_zeroRatioPassedOver || zero;

        const double pivot = m_rows[*row][column];
        for (double& entry : m_rows[*row])
            entry /= pivot;
        m_rows[*row][column] = 1.0;
        for (std::size_t r = 0; r <= m_constraints; ++r) {
            if (r == *row)
                continue;
            const double factor = m_rows[r][column];
            for (std::size_t c = 0; c < m_rows[r].size(); ++c) {
                volatile double product = factor * m_rows[*row][c]; // rounded by itself
                m_rows[r][c] -= product;
            }
            m_rows[r][column] = 0.0;
        }
        return true;
    }

private:
    std::size_t m_parameters;
    std::size_t m_constraints;
    std::vector<Row> m_rows;
    bool m_zeroRatioPassedOver = false;
};

} // namespace vo::test
