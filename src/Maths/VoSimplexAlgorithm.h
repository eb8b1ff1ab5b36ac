#pragma once

#include <Core/VoNumericMatrix.h>
#include <Core/VoVector.h>
#include <Maths/VoLinearProblemAlgorithm.h>

#include <memory>

using SimplexMatrix = VoNumericMatrix<double>; ///< The tableau of a VoSimplexAlgorithm.
using SimplexVector = VoVector<double>;        ///< Coefficients and parameters of a VoSimplexAlgorithm.

/// The simplex method on a dense tableau, for small linear problems.
///
/// With `Maximise` the objective is made largest subject to constraints "<=" with bounds that are not negative; else
/// it is made smallest subject to as many constraints ">=" as there are parameters, through the dual problem, with
/// objective coefficients that are not negative. Whether a problem is of that kind is not checked: the solver starts at
/// the origin and takes it as feasible.
///
///     VoSimplexAlgorithm<double, true> problem(2, 2);
///     problem.setObjective({3, 2});
///     problem.addLeqConstraint({1, 1}, 4);
///     problem.addLeqConstraint({1, 3}, 6);
///     if (problem.run(100).first)
///         use(problem.solutionParameters(), problem.solutionValue()); // 4, 0 and 12
///
/// **The answer needs checking on degenerate problems.** The ratio test is this solver's own and stays as it is: any
/// row takes part, the objective's too, whose ratio of right-hand side to pivot-column entry is above zero, whatever
/// the signs of the two. So a row whose ratio is exactly 0 never limits a step (see zeroRatioPassedOver()), and the
/// point reached may break that row's constraint: "make 2x + 3y largest, x + 2y <= 2, x + y <= 1" gives 4, although the
/// optimum is 3. A parameter whose largest value is 0 ("x <= 0") may end as "No pivot row can be found". And where two
/// columns of the final tableau are the same unit column, solutionParameters() reads both from one row. Problems whose
/// data are all above zero are met by none of this in practice. Ask VoLinearProblemCertificate whenever bounds may be
/// zero, constraints may meet in one point, coefficients may be zero or negative, or a wrong answer would be costly.
///
/// A problem without a finite optimum shows as "No pivot row can be found"; one without any feasible point is not
/// noticed.
///
/// Every check is made before anything changes. Constraints and objective belong before the first run(): afterwards
/// the tableau is no longer theirs and the answer would be meaningless. A copy goes on independently. A moved-from
/// solver has no parameters and no constraints. One solver belongs to one thread at a time.
///
/// Compiled for `double` only. The results do not depend on the processor.
template <typename T, bool Maximise>
class VOCORE_EXPORT VoSimplexAlgorithm : public VoLinearProblemAlgorithm<T, VoNumericMatrix<T>, VoVector<T>>
{
public:
    /// An empty problem. The tableau has numberConstraints + 1 rows, the last one for the objective, and
    /// numberParameters + numberConstraints + 2 columns: parameters, slack variables, objective variable, right-hand
    /// side.
    /// @throws VoInvalidCallException "Number of parameters must be greater than zero"; "Number of constraints must be
    /// greater than zero" (maximising); "Number of parameters must be the same as the number of constraints for
    /// minimisation"
    /// @throws VoOverflowException when the tableau would have more than 100,000,000 cells
    VoSimplexAlgorithm(std::size_t numberParameters, std::size_t numberConstraints);
    VoSimplexAlgorithm(const VoSimplexAlgorithm& other);                ///< The same problem in the same state.
    VoSimplexAlgorithm(VoSimplexAlgorithm&& other) noexcept;            ///< Takes the problem over.
    VoSimplexAlgorithm& operator=(const VoSimplexAlgorithm& other);     ///< The same problem in the same state.
    VoSimplexAlgorithm& operator=(VoSimplexAlgorithm&& other) noexcept; ///< Takes the problem over.
    ~VoSimplexAlgorithm() override;

    /// Always refuses.
    /// @throws VoInvalidConstraintTypeException "Equality constraints cannot be added to this problem"
    void addEqualityConstraint(const VoVector<T>& coefficients, const T& bound) override;
    /// Adds a constraint to a problem that is to be made smallest.
    /// @throws VoInvalidConstraintTypeException "Greater than or equal constraints cannot be added to this problem"
    /// when maximising
    /// @throws VoInvalidNumberCoefficientsException when there is not one coefficient for each parameter
    /// @throws VoTooManyConstraintsException when numberConstraints() were added already
    /// @throws VoInvalidCoefficientException when a coefficient or the bound is infinite or not a number
    void addGeqConstraint(const VoVector<T>& coefficients, const T& bound) override;
    /// Adds a constraint to a problem that is to be made largest.
    /// @throws VoInvalidConstraintTypeException "Less than or equal constraints cannot be added to this problem" when
    /// minimising; else as addGeqConstraint()
    void addLeqConstraint(const VoVector<T>& coefficients, const T& bound) override;

    std::size_t numberConstraints() const override;
    std::size_t numberParameters() const override;
    /// The tableau. Valid until the solver is assigned to, moved from or destroyed.
    const VoNumericMatrix<T>& problemMatrix() const override;

    /// Pivots until the solution is found or that many iterations were made; 0 only asks. When the limit ends it, the
    /// answer is (false, the limit) and a further call goes on from there.
    /// @throws VoInvalidCallException "No pivot row can be found", with the tableau as the last iteration left it
    VoPair<bool, std::size_t> run(std::size_t maximumIterations) override;

    /// Sets the objective, replacing an earlier one.
    /// @throws VoInvalidNumberCoefficientsException when there is not one coefficient for each parameter
    /// @throws VoInvalidCoefficientException when a coefficient is infinite or not a number
    void setObjective(const VoVector<T>& coefficients) override;

    bool solutionFound() const override;
    /// The values of the parameters; meaningful once the solution is found.
    VoVector<T> solutionParameters() const override;
    /// The value of the objective; meaningful once the solution is found. Valid as problemMatrix().
    const T& solutionValue() const override;

    /// Whether some step was made although a row of a constraint allowed no step at all: its pivot-column entry was
    /// above zero and its right-hand side exactly zero. Then the answer may be wrong.
    bool zeroRatioPassedOver() const;

private:
    struct Private;

    const Private& state() const;
    void requireCoefficients(const VoVector<T>& coefficients) const;
    void addConstraint(const VoVector<T>& coefficients, const T& bound);
    std::size_t runCondensed(std::size_t maximumIterations);

    std::unique_ptr<Private> m_private;
};

extern template class VOCORE_EXPORT VoLinearProblemAlgorithm<double, SimplexMatrix, SimplexVector>;
extern template class VOCORE_EXPORT VoSimplexAlgorithm<double, true>;
extern template class VOCORE_EXPORT VoSimplexAlgorithm<double, false>;
