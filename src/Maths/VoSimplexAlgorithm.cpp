#include <Maths/VoSimplexAlgorithm.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoThrow.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoMaths.h>
#include <Maths/detail/CondensedTableau.h>
#include <Maths/detail/ProblemLimits.h>
#include <Maths/detail/SimplexKernel.h>

#include <algorithm>
#include <cmath>
#include <vector>

using vo::detail::RequireFinite;

namespace {

using Tableau = VoNumericMatrix<double>;

// From here on leaving out the unit columns saves more than it costs to take them out and put them back.
constexpr std::size_t FewestCellsToCondense = 16384;
constexpr std::size_t FewestIterationsToCondense = 8;

template <bool Maximise>
void RequireShape(std::size_t parameters, std::size_t constraints)
{
    if (parameters == 0)
        throw VoInvalidCallException("Number of parameters must be greater than zero");
    if (Maximise && constraints == 0)
        throw VoInvalidCallException("Number of constraints must be greater than zero");
    if (!Maximise && parameters != constraints)
        throw VoInvalidCallException(
            "Number of parameters must be the same as the number of constraints for minimisation");
    if (!vo::detail::FitsTableau(parameters, constraints))
        vo::detail::ThrowOverflow();
}

// One run's view of a tableau: the steps of the simplex method, and what is known of the rows between them.
class Steps
{
public:
    Steps(Tableau& tableau, std::size_t variables)
        : m_tableau(tableau)
        , m_variables(variables)
        , m_objective(tableau.rows() - 1)
        , m_rightHandSide(tableau.columns() - 1)
        , m_negativeZero(tableau.rows())
    {
        for (std::size_t row = 0; row < tableau.rows(); ++row)
            m_negativeZero[row] = vo::detail::HoldsNegativeZero(tableau.rowData(row), tableau.columns());
    }

    // The lowest column among those with the smallest objective entry.
    std::size_t chooseColumn() const
    {
        const double* objective = m_tableau.rowData(m_objective);
        std::size_t chosen = 0;
        for (std::size_t column = 1; column < m_variables; ++column)
            if (objective[column] < objective[chosen])
                chosen = column;
        return chosen;
    }

    struct Row
    {
        std::size_t index;
        bool zeroRatioPassedOver;
    };

    // The first row among those with the smallest ratio above zero. The sign of the entry does not count, and the
    // objective's row takes part: results that the application has stored depend on it.
    Row chooseRow(std::size_t column) const
    {
        bool found = false;
        double smallest = 0;
        Row chosen{0, false};
        for (std::size_t row = 0; row < m_tableau.rows(); ++row) {
            const double entry = m_tableau(row, column);
            if (entry == 0.0)
                continue;
            const double ratio = m_tableau(row, m_rightHandSide) / entry;
            if (ratio == 0.0 && entry > 0.0 && row != m_objective)
                chosen.zeroRatioPassedOver = true;
            if (!(ratio > 0.0) || (found && !(ratio < smallest)))
                continue;
            found = true;
            smallest = ratio;
            chosen.index = row;
        }
        if (!found)
            throw VoInvalidCallException("No pivot row can be found");
        return chosen;
    }

    void pivot(std::size_t pivotRow, std::size_t pivotColumn)
    {
        const std::size_t columns = m_tableau.columns();
        double* source = m_tableau.rowData(pivotRow);
        const auto content = vo::detail::DivideRow(source, source[pivotColumn], columns);
        m_negativeZero[pivotRow] = content.negativeZero;
        source[pivotColumn] = 1.0;

        for (std::size_t row = 0; row < m_tableau.rows(); ++row) {
            if (row == pivotRow)
                continue;
            double* target = m_tableau.rowData(row);
            // 0 times a row that is not finite is NaN: it has to show in every row.
            if (target[pivotColumn] != 0.0 || !content.finite || m_negativeZero[row])
                vo::detail::SubtractScaledRow(target, source, target[pivotColumn], columns);
            target[pivotColumn] = 0.0;
        }
    }

private:
    Tableau& m_tableau;
    const std::size_t m_variables; // columns that may be chosen: parameters and slack variables
    const std::size_t m_objective;
    const std::size_t m_rightHandSide;
    // Rows that may hold -0.0. Subtracting 0.0 times a finite row changes nothing but the sign of such a cell, so all
    // others may be left out. Subtraction never makes a -0.0 where there was none.
    std::vector<unsigned char> m_negativeZero;
};

bool IsFound(const Tableau& tableau, std::size_t variables)
{
    if (tableau.columns() <= 2)
        return true;
    const double* objective = tableau.rowData(tableau.rows() - 1);
    return std::none_of(objective, objective + variables, [](double entry) { return entry < 0.0; });
}

// The right-hand side of the row in which the column holds its one 1; 0 for every other column.
double ValueOfColumn(const Tableau& tableau, std::size_t column)
{
    std::size_t ones = 0;
    std::size_t rowOfOne = 0;
    for (std::size_t row = 0; row < tableau.rows(); ++row) {
        const double entry = tableau(row, column);
        if (VoMaths::Equal(entry, 1.0)) {
            ++ones;
            rowOfOne = row;
        } else if (!VoMaths::Equal(entry, 0.0)) {
            return 0.0;
        }
    }
    return ones == 1 ? tableau(rowOfOne, tableau.columns() - 1) : 0.0;
}

} // namespace

template <typename T, bool Maximise>
struct VoSimplexAlgorithm<T, Maximise>::Private
{
    Private() = default;
    Private(std::size_t parameters, std::size_t constraints)
        : numberParameters(parameters)
        , numberConstraints(constraints)
        , tableau(constraints + 1, parameters + constraints + 2)
    {
        for (std::size_t row = 0; row <= constraints; ++row)
            tableau(row, parameters + row) = 1.0;
    }

    std::size_t variables() const { return numberParameters + numberConstraints; }
    std::size_t rightHandSide() const { return tableau.columns() - 1; }

    std::size_t numberParameters = 0;
    std::size_t numberConstraints = 0;
    std::size_t constraintsAdded = 0;
    // A row for each constraint, of the dual problem when minimising, then the objective's. A column for each
    // parameter, then for each row's slack variable, the objective's own included, then the right-hand side. Empty only
    // in the state of a moved-from solver.
    Tableau tableau;
    bool zeroRatioPassedOver = false;
    const T noValue = 0; // the objective of a moved-from solver
};

template <typename T, bool Maximise>
VoSimplexAlgorithm<T, Maximise>::VoSimplexAlgorithm(std::size_t numberParameters, std::size_t numberConstraints)
{
    RequireShape<Maximise>(numberParameters, numberConstraints);
    m_private = std::make_unique<Private>(numberParameters, numberConstraints);
}

template <typename T, bool Maximise>
VoSimplexAlgorithm<T, Maximise>::VoSimplexAlgorithm(const VoSimplexAlgorithm& other)
    : VoLinearProblemAlgorithm<T, VoNumericMatrix<T>, VoVector<T>>(other)
    , m_private(std::make_unique<Private>(other.state()))
{
}

template <typename T, bool Maximise>
VoSimplexAlgorithm<T, Maximise>::VoSimplexAlgorithm(VoSimplexAlgorithm&& other) noexcept = default;

template <typename T, bool Maximise>
VoSimplexAlgorithm<T, Maximise>& VoSimplexAlgorithm<T, Maximise>::operator=(const VoSimplexAlgorithm& other)
{
    m_private = std::make_unique<Private>(other.state());
    return *this;
}

template <typename T, bool Maximise>
VoSimplexAlgorithm<T, Maximise>&
VoSimplexAlgorithm<T, Maximise>::operator=(VoSimplexAlgorithm&& other) noexcept = default;

template <typename T, bool Maximise>
VoSimplexAlgorithm<T, Maximise>::~VoSimplexAlgorithm() = default;

template <typename T, bool Maximise>
const typename VoSimplexAlgorithm<T, Maximise>::Private& VoSimplexAlgorithm<T, Maximise>::state() const
{
    static const auto& movedFrom = *new Private; // outlives all static objects
    return m_private ? *m_private : movedFrom;
}

template <typename T, bool Maximise>
void VoSimplexAlgorithm<T, Maximise>::requireCoefficients(const VoVector<T>& coefficients) const
{
    if (coefficients.size() != state().numberParameters)
        throw VoInvalidNumberCoefficientsException();
}

template <typename T, bool Maximise>
void VoSimplexAlgorithm<T, Maximise>::addEqualityConstraint(const VoVector<T>&, const T&)
{
    throw VoInvalidConstraintTypeException("Equality constraints cannot be added to this problem");
}

template <typename T, bool Maximise>
void VoSimplexAlgorithm<T, Maximise>::addGeqConstraint(const VoVector<T>& coefficients, const T& bound)
{
    if constexpr (Maximise)
        throw VoInvalidConstraintTypeException("Greater than or equal constraints cannot be added to this problem");
    else
        addConstraint(coefficients, bound);
}

template <typename T, bool Maximise>
void VoSimplexAlgorithm<T, Maximise>::addLeqConstraint(const VoVector<T>& coefficients, const T& bound)
{
    if constexpr (Maximise)
        addConstraint(coefficients, bound);
    else
        throw VoInvalidConstraintTypeException("Less than or equal constraints cannot be added to this problem");
}

template <typename T, bool Maximise>
void VoSimplexAlgorithm<T, Maximise>::addConstraint(const VoVector<T>& coefficients, const T& bound)
{
    requireCoefficients(coefficients);
    if (state().constraintsAdded == state().numberConstraints)
        throw VoTooManyConstraintsException();
    std::for_each(coefficients.begin(), coefficients.end(), RequireFinite);
    RequireFinite(bound);

    Tableau& tableau = m_private->tableau;
    const std::size_t added = m_private->constraintsAdded++;
    const T* values = coefficients.data();
    if constexpr (Maximise) {
        std::copy_n(values, coefficients.size(), tableau.rowData(added));
        tableau(added, m_private->rightHandSide()) = bound;
    } else {
        // A constraint is a column of the dual problem.
        for (std::size_t row = 0; row < coefficients.size(); ++row)
            tableau(row, added) = values[row];
        tableau(m_private->numberConstraints, added) = -bound;
    }
}

template <typename T, bool Maximise>
std::size_t VoSimplexAlgorithm<T, Maximise>::numberConstraints() const
{
    return state().numberConstraints;
}

template <typename T, bool Maximise>
std::size_t VoSimplexAlgorithm<T, Maximise>::numberParameters() const
{
    return state().numberParameters;
}

template <typename T, bool Maximise>
const VoNumericMatrix<T>& VoSimplexAlgorithm<T, Maximise>::problemMatrix() const
{
    return state().tableau;
}

template <typename T, bool Maximise>
VoPair<bool, std::size_t> VoSimplexAlgorithm<T, Maximise>::run(std::size_t maximumIterations)
{
    std::size_t iterations = 0;
    if (maximumIterations == 0 || solutionFound())
        return {solutionFound(), iterations};

    // What comes after this leaves off where the condensed form cannot go on, with the same bits as if all steps had
    // been made here.
    iterations = runCondensed(maximumIterations);
    if (iterations == maximumIterations || solutionFound())
        return {solutionFound(), iterations};

    Steps steps(m_private->tableau, m_private->variables());
    do {
        const std::size_t column = steps.chooseColumn();
        const auto row = steps.chooseRow(column);
        m_private->zeroRatioPassedOver |= row.zeroRatioPassedOver;
        steps.pivot(row.index, column);
        ++iterations;
    } while (iterations < maximumIterations && !solutionFound());
    return {solutionFound(), iterations};
}

// Makes as many steps as the condensed form of the tableau allows, and says how many.
template <typename T, bool Maximise>
std::size_t VoSimplexAlgorithm<T, Maximise>::runCondensed(std::size_t maximumIterations)
{
    using vo::detail::CondensedTableau;
    Tableau& tableau = m_private->tableau;
    if (maximumIterations < FewestIterationsToCondense || tableau.rows() * tableau.columns() < FewestCellsToCondense)
        return 0;
    auto condensed = CondensedTableau::Of(tableau, m_private->variables());
    if (!condensed)
        return 0;
    std::size_t iterations = 0;
    for (; iterations < maximumIterations && !condensed->isSolved(); ++iterations) {
        const auto made = condensed->step();
        if (made == CondensedTableau::Step::NotMade)
            break;
        m_private->zeroRatioPassedOver |= made == CondensedTableau::Step::MadeOverZeroRatio;
    }
    condensed->restore(tableau);
    return iterations;
}

template <typename T, bool Maximise>
void VoSimplexAlgorithm<T, Maximise>::setObjective(const VoVector<T>& coefficients)
{
    requireCoefficients(coefficients);
    std::for_each(coefficients.begin(), coefficients.end(), RequireFinite);
    const T* values = coefficients.data();
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        if constexpr (Maximise)
            m_private->tableau(m_private->numberConstraints, i) = -values[i];
        else
            m_private->tableau(i, m_private->rightHandSide()) = values[i]; // the dual's right-hand side
    }
}

template <typename T, bool Maximise>
bool VoSimplexAlgorithm<T, Maximise>::solutionFound() const
{
    return IsFound(state().tableau, state().variables());
}

template <typename T, bool Maximise>
VoVector<T> VoSimplexAlgorithm<T, Maximise>::solutionParameters() const
{
    const Private& now = state();
    VoVector<T> parameters(now.numberParameters);
    for (std::size_t i = 0; i < now.numberParameters; ++i)
        parameters.data()[i] =
            Maximise ? ValueOfColumn(now.tableau, i) : now.tableau(now.numberConstraints, now.numberConstraints + i);
    return parameters;
}

template <typename T, bool Maximise>
const T& VoSimplexAlgorithm<T, Maximise>::solutionValue() const
{
    const Private& now = state();
    return now.tableau.isEmpty() ? now.noValue : now.tableau.rowData(now.numberConstraints)[now.rightHandSide()];
}

template <typename T, bool Maximise>
bool VoSimplexAlgorithm<T, Maximise>::zeroRatioPassedOver() const
{
    return state().zeroRatioPassedOver;
}

template class VoLinearProblemAlgorithm<double, SimplexMatrix, SimplexVector>;
template class VoSimplexAlgorithm<double, true>;
template class VoSimplexAlgorithm<double, false>;
