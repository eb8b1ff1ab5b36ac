#include <Maths/VoLinearProblemSolution.h>

#include <Maths/VoLinearProblem.h>
#include <Maths/VoMaths.h>
#include <Maths/VoSimplexAlgorithm.h>

#include <optional>
#include <vector>

namespace {

// The row in which the column holds a 1 and nothing but zeros elsewhere.
std::optional<std::size_t> UnitRow(const SimplexMatrix& tableau, std::size_t column)
{
    std::optional<std::size_t> found;
    for (std::size_t row = 0; row < tableau.rows(); ++row) {
        const double entry = tableau(row, column);
        if (VoMaths::Equal(entry, 0.0))
            continue;
        if (found || !VoMaths::Equal(entry, 1.0))
            return std::nullopt;
        found = row;
    }
    return found;
}

// The values of the dual problem's variables. Of several columns that are the same unit column, only one has a value.
VoVector<double> ColumnValues(const SimplexMatrix& tableau, std::size_t columns)
{
    VoVector<double> values(columns);
    std::vector<bool> taken(tableau.rows());
    for (std::size_t column = 0; column < columns; ++column) {
        const auto row = UnitRow(tableau, column);
        if (!row || taken[*row])
            continue;
        taken[*row] = true;
        values.data()[column] = tableau(*row, tableau.columns() - 1);
    }
    return values;
}

template <bool Maximise>
VoLinearProblemSolution SolutionOf(const VoSimplexAlgorithm<double, Maximise>& algorithm)
{
    VoLinearProblemSolution solution;
    solution.parameters = algorithm.solutionParameters();
    solution.value = algorithm.solutionValue();
    solution.found = algorithm.solutionFound();
    solution.zeroRatioPassedOver = algorithm.zeroRatioPassedOver();

    const SimplexMatrix& tableau = algorithm.problemMatrix();
    if (tableau.isEmpty())
        return solution;
    if constexpr (Maximise) {
        const double* slacks = tableau.rowData(tableau.rows() - 1) + algorithm.numberParameters();
        solution.multipliers = VoVector<double>(slacks, slacks + algorithm.numberConstraints());
    } else {
        solution.multipliers = ColumnValues(tableau, algorithm.numberConstraints());
    }
    return solution;
}

template <bool Maximise>
VoLinearProblemSolution SolveAs(const VoLinearProblem& problem, std::size_t maximumIterations)
{
    VoSimplexAlgorithm<double, Maximise> algorithm(problem.numberParameters(), problem.numberConstraints());
    algorithm.setObjective(problem.objective());
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i) {
        if constexpr (Maximise)
            algorithm.addLeqConstraint(problem.coefficients(i), problem.bound(i));
        else
            algorithm.addGeqConstraint(problem.coefficients(i), problem.bound(i));
    }
    const auto result = algorithm.run(maximumIterations);
    VoLinearProblemSolution solution = SolutionOf(algorithm);
    solution.iterations = result.second;
    return solution;
}

} // namespace

VoLinearProblemSolution VoLinearProblemSolution::Of(const VoSimplexAlgorithm<double, true>& algorithm)
{
    return SolutionOf(algorithm);
}

VoLinearProblemSolution VoLinearProblemSolution::Of(const VoSimplexAlgorithm<double, false>& algorithm)
{
    return SolutionOf(algorithm);
}

VoLinearProblemSolution VoLinearProblemSolution::Solve(const VoLinearProblem& problem, std::size_t maximumIterations)
{
    return problem.sense() == VoLinearProblem::Sense::Maximise ? SolveAs<true>(problem, maximumIterations)
                                                               : SolveAs<false>(problem, maximumIterations);
}
