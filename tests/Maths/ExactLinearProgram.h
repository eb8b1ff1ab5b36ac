#pragma once

#include <Maths/VoLinearProblem.h>

#include <gmpxx.h>

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace vo::test {

/// The number of up to eight decimals that a double stands for.
inline mpq_class Decimal(double value)
{
    return mpq_class(std::round(value * 1e8)) / 100000000;
}

/// A linear problem whose numbers have up to eight decimals, solved in rational numbers, without any rounding: in two
/// phases, with the rule of the lowest index, which never circles.
class ExactLinearProgram
{
public:
    explicit ExactLinearProgram(const VoLinearProblem& problem)
        : m_parameters(problem.numberParameters())
        , m_rows(problem.numberConstraints())
    {
        // Columns: parameters, an artificial variable, the right-hand side; the last two rows are the objectives. Each
        // row says what its variable is: the right-hand side less the entries times the columns' variables.
        const double sign = problem.sense() == VoLinearProblem::Sense::Maximise ? 1 : -1;
        m_cells.assign(m_rows + 2, std::vector<mpq_class>(m_parameters + 2));
        for (std::size_t i = 0; i < m_rows; ++i) {
            for (std::size_t j = 0; j < m_parameters; ++j)
                m_cells[i][j] = sign * Decimal(problem.coefficients(i)[j]);
            m_cells[i][m_parameters] = -1;
            m_cells[i].back() = sign * Decimal(problem.bound(i));
            m_basic.push_back(m_parameters + 1 + i);
        }
        for (std::size_t j = 0; j < m_parameters; ++j)
            m_cells[m_rows][j] = -sign * Decimal(problem.objective()[j]);
        m_cells[m_rows + 1][m_parameters] = 1;
        for (std::size_t j = 0; j <= m_parameters; ++j)
            m_free.push_back(j);
        m_feasible = findCorner();
        m_bounded = m_feasible && maximise(m_rows);
        m_sign = sign;
    }

    bool feasible() const { return m_feasible; }

    std::optional<mpq_class> optimum() const
    {
        return m_bounded ? std::optional<mpq_class>(m_sign * m_cells[m_rows].back()) : std::nullopt;
    }

    /// A corner at which the optimum is, when there is one.
    std::vector<mpq_class> parameters() const
    {
        std::vector<mpq_class> values(m_parameters);
        for (std::size_t i = 0; i < m_rows; ++i)
            if (m_basic[i] < m_parameters)
                values[m_basic[i]] = m_cells[i].back();
        return values;
    }

    /// The multipliers that prove it.
    std::vector<mpq_class> multipliers() const
    {
        std::vector<mpq_class> values(m_rows);
        for (std::size_t j = 0; j <= m_parameters; ++j)
            if (m_free[j] > m_parameters)
                values[m_free[j] - m_parameters - 1] = m_cells[m_rows][j];
        return values;
    }

private:
    bool findCorner()
    {
        std::size_t lowest = 0;
        for (std::size_t i = 1; i < m_rows; ++i)
            if (m_cells[i].back() < m_cells[lowest].back())
                lowest = i;
        if (m_cells[lowest].back() >= 0)
            return true;
        pivot(lowest, m_parameters);
        maximise(m_rows + 1);
        if (m_cells[m_rows + 1].back() != 0)
            return false;
        for (std::size_t i = 0; i < m_rows; ++i)
            for (std::size_t j = 0; j <= m_parameters && m_basic[i] == m_parameters; ++j)
                if (m_cells[i][j] != 0)
                    pivot(i, j);
        return true;
    }

    // False when there is no limit.
    bool maximise(std::size_t objective)
    {
        for (;;) {
            std::optional<std::size_t> column;
            for (std::size_t j = 0; j <= m_parameters; ++j)
                if (m_cells[objective][j] < 0 && (m_free[j] != m_parameters || objective > m_rows) &&
                    (!column || m_free[j] < m_free[*column]))
                    column = j;
            if (!column)
                return true;
            std::optional<std::size_t> row;
            for (std::size_t i = 0; i < m_rows; ++i) {
                if (m_cells[i][*column] <= 0)
                    continue;
                const int order =
                    row ? cmp(m_cells[i].back() * m_cells[*row][*column], m_cells[*row].back() * m_cells[i][*column])
                        : -1;
                if (order < 0 || (order == 0 && m_basic[i] < m_basic[*row]))
                    row = i;
            }
            if (!row)
                return false;
            pivot(*row, *column);
        }
    }

    void pivot(std::size_t row, std::size_t column)
    {
        const mpq_class by = 1 / m_cells[row][column];
        for (std::size_t j = 0; j < m_parameters + 2; ++j)
            m_cells[row][j] *= j == column ? by / m_cells[row][column] : by;
        for (std::size_t i = 0; i < m_rows + 2; ++i) {
            const mpq_class factor = m_cells[i][column];
            if (i == row || factor == 0)
                continue;
            m_cells[i][column] = 0;
            for (std::size_t j = 0; j < m_parameters + 2; ++j)
                m_cells[i][j] -= factor * m_cells[row][j];
        }
        std::swap(m_basic[row], m_free[column]);
    }

    std::size_t m_parameters;
    std::size_t m_rows;
    double m_sign = 1;
    std::vector<std::vector<mpq_class>> m_cells;
    std::vector<std::size_t> m_basic; // the variable of each row,
    std::vector<std::size_t> m_free;  // and of each column: parameters, the artificial one, then slacks
    bool m_feasible = false;
    bool m_bounded = false;
};

} // namespace vo::test
