#include <Maths/detail/CondensedTableau.h>

#include <Maths/detail/SimplexKernel.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vo::detail {

namespace {

constexpr std::size_t None = static_cast<std::size_t>(-1);

bool IsPlainZero(double value)
{
    return value == 0.0 && !std::signbit(value);
}

// The row in which each column holds its one 1 among plain zeros; None for every other column.
std::vector<std::size_t> UnitRows(const CondensedTableau::Tableau& tableau)
{
    const std::size_t columns = tableau.columns() - 1;
    std::vector<std::size_t> rows(columns, None);
    std::vector<unsigned char> entries(columns, 0); // 2 for a column that is no unit column
    for (std::size_t row = 0; row < tableau.rows(); ++row) {
        const double* cells = tableau.rowData(row);
        for (std::size_t column = 0; column < columns; ++column) {
            if (IsPlainZero(cells[column]))
                continue;
            entries[column] = cells[column] == 1.0 && entries[column] == 0 ? 1 : 2;
            rows[column] = row;
        }
    }
    for (std::size_t column = 0; column < columns; ++column)
        if (entries[column] != 1)
            rows[column] = None;
    return rows;
}

} // namespace

std::optional<CondensedTableau> CondensedTableau::Of(const Tableau& tableau, std::size_t variables)
{
    const std::vector<std::size_t> rows = UnitRows(tableau);
    std::vector<std::size_t> unitColumns(tableau.rows(), None);
    for (std::size_t column = 0; column < rows.size(); ++column)
        if (rows[column] != None)
            unitColumns[rows[column]] = column;
    if (std::find(unitColumns.begin(), unitColumns.end(), None) != unitColumns.end())
        return std::nullopt;
    return CondensedTableau(tableau, variables, std::move(unitColumns));
}

CondensedTableau::CondensedTableau(const Tableau& tableau, std::size_t variables, std::vector<std::size_t> unitColumns)
    : m_cells(tableau.rows(), tableau.columns() - tableau.rows())
    , m_variables(variables)
    , m_unitColumns(std::move(unitColumns))
    , m_negativeZero(tableau.rows())
    , m_pivotRow(m_cells.columns())
{
    // The right-hand side is never among the unit columns, so it comes last here too.
    std::vector<unsigned char> isUnit(tableau.columns(), 0);
    for (std::size_t column : m_unitColumns)
        isUnit[column] = 1;
    for (std::size_t column = 0; column < tableau.columns(); ++column)
        if (!isUnit[column])
            m_columns.push_back(column);
    for (std::size_t row = 0; row < tableau.rows(); ++row) {
        const double* from = tableau.rowData(row);
        double* to = m_cells.rowData(row);
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            to[i] = from[m_columns[i]];
        m_negativeZero[row] = HoldsNegativeZero(to, m_columns.size());
    }
}

bool CondensedTableau::isSolved() const
{
    const double* objective = m_cells.rowData(m_cells.rows() - 1);
    for (std::size_t i = 0; i + 1 < m_columns.size(); ++i)
        if (objective[i] < 0.0 && m_columns[i] < m_variables)
            return false;
    return true;
}

// As on the whole tableau: the unit columns' objective entries are 0 or cannot be chosen, so the smallest one is here.
std::optional<std::size_t> CondensedTableau::chooseColumn() const
{
    const double* objective = m_cells.rowData(m_cells.rows() - 1);
    std::optional<std::size_t> chosen;
    for (std::size_t i = 0; i + 1 < m_columns.size(); ++i) {
        if (std::isnan(objective[i]))
            return std::nullopt;
        if (m_columns[i] >= m_variables || !(objective[i] < 0.0))
            continue;
        if (!chosen || objective[i] < objective[*chosen] ||
            (objective[i] == objective[*chosen] && m_columns[i] < m_columns[*chosen]))
            chosen = i;
    }
    return chosen;
}

std::optional<CondensedTableau::Pivot> CondensedTableau::choosePivot() const
{
    const auto column = chooseColumn();
    if (!column)
        return std::nullopt;
    std::optional<std::size_t> chosen;
    double smallest = 0;
    bool overZeroRatio = false;
    const std::size_t rightHandSide = m_cells.columns() - 1;
    for (std::size_t row = 0; row < m_cells.rows(); ++row) {
        const double entry = m_cells(row, *column);
        if (!std::isfinite(entry))
            return std::nullopt;
        if (entry == 0.0)
            continue;
        // The objective's row takes part, as on the whole tableau.
        const double ratio = m_cells(row, rightHandSide) / entry;
        if (ratio == 0.0 && entry > 0.0 && row + 1 != m_cells.rows())
            overZeroRatio = true;
        if (ratio > 0.0 && (!chosen || ratio < smallest)) {
            chosen = row;
            smallest = ratio;
        }
    }
    // Divided by a negative pivot, the zeros of a unit column would become -0.0, which this form cannot hold.
    if (!chosen || m_cells(*chosen, *column) < 0.0)
        return std::nullopt;
    return Pivot{*chosen, *column, overZeroRatio};
}

CondensedTableau::Step CondensedTableau::step()
{
    const auto pivot = choosePivot();
    if (!pivot || !preparePivotRow(*pivot))
        return Step::NotMade;
    eliminate(*pivot);
    // The two columns have exchanged their parts: each row has one unit column again, and nothing else has.
    std::swap(m_columns[pivot->column], m_unitColumns[pivot->row]);
    return pivot->overZeroRatio ? Step::MadeOverZeroRatio : Step::Made;
}

// Changes only m_pivotRow, so that a step can still be refused here, with the tableau as it was.
//
// Where the pivot's column was, the row's unit column takes its place: in this row a 1, which becomes 1 / pivot.
bool CondensedTableau::preparePivotRow(const Pivot& pivot)
{
    const double* row = m_cells.rowData(pivot.row);
    std::copy_n(row, m_pivotRow.size(), m_pivotRow.begin());
    m_pivotRow[pivot.column] = 1.0;
    const RowContent content = DivideRow(m_pivotRow.data(), row[pivot.column], m_pivotRow.size());
    m_pivotRowHasNegativeZero = content.negativeZero;
    return content.finite;
}

// In all other rows that unit column has a 0, and becomes 0 - factor / pivot by the same subtraction as every other
// cell. A factor of 0 changes nothing but the sign of zeros, and those only where there is a -0.0.
void CondensedTableau::eliminate(const Pivot& pivot)
{
    for (std::size_t row = 0; row < m_cells.rows(); ++row) {
        if (row == pivot.row)
            continue;
        double* target = m_cells.rowData(row);
        const double factor = std::exchange(target[pivot.column], 0.0);
        if (factor != 0.0 || m_negativeZero[row])
            SubtractScaledRow(target, m_pivotRow.data(), factor, m_pivotRow.size());
    }
    std::copy(m_pivotRow.begin(), m_pivotRow.end(), m_cells.rowData(pivot.row));
    m_negativeZero[pivot.row] = m_pivotRowHasNegativeZero;
}

void CondensedTableau::restore(Tableau& tableau) const
{
    for (std::size_t row = 0; row < tableau.rows(); ++row) {
        double* to = tableau.rowData(row);
        const double* from = m_cells.rowData(row);
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            to[m_columns[i]] = from[i];
        for (std::size_t column : m_unitColumns)
            to[column] = 0.0;
        to[m_unitColumns[row]] = 1.0;
    }
}

} // namespace vo::detail
