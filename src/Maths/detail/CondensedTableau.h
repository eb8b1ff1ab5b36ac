#pragma once

#include <Core/VoNumericMatrix.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace vo::detail {

/// A simplex tableau without its unit columns, which is half of a square problem's: every row has one, and the steps
/// of the method keep them unit columns except for the one that they exchange.
///
/// Steps made here leave the tableau, once restored, with the same bits as if they had been made on it. Where that
/// could not be kept up (a negative pivot leaves -0.0 in unit columns, a number that is not finite leaves NaN) no step
/// is made.
class CondensedTableau
{
public:
    using Tableau = VoNumericMatrix<double>;

    /// What step() did.
    enum class Step
    {
        Made,
        MadeOverZeroRatio, ///< Made, although some constraint's row had the ratio 0.
        NotMade            ///< Not possible here, or not at all; nothing has changed.
    };

    /// The condensed form of a tableau of which the first `variables` columns may be chosen as pivots; none when not
    /// every row has a unit column of its own.
    static std::optional<CondensedTableau> Of(const Tableau& tableau, std::size_t variables);

    bool isSolved() const; ///< No entry below zero in the objective's row.
    Step step();           ///< One iteration.

    void restore(Tableau& tableau) const; ///< Writes all columns of the tableau that this was made of.

private:
    struct Pivot
    {
        std::size_t row;
        std::size_t column;
        bool overZeroRatio;
    };

    CondensedTableau(const Tableau& tableau, std::size_t variables, std::vector<std::size_t> unitColumns);

    std::optional<std::size_t> chooseColumn() const;
    std::optional<Pivot> choosePivot() const;
    bool preparePivotRow(const Pivot& pivot);
    void eliminate(const Pivot& pivot);

    Tableau m_cells; // the other columns in some order, then the right-hand side
    std::size_t m_variables;
    std::vector<std::size_t> m_unitColumns;    // the original index of each row's unit column
    std::vector<std::size_t> m_columns;        // the original index of each other column
    std::vector<unsigned char> m_negativeZero; // rows that may hold -0.0 among the other columns
    std::vector<double> m_pivotRow;            // the next state of the pivot row
    bool m_pivotRowHasNegativeZero = false;
};

} // namespace vo::detail
