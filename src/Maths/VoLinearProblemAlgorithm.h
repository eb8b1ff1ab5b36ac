#pragma once

#include <Core/VoExport.h>
#include <Core/VoPair.h>

#include <cstddef>

/// What every solver of linear problems offers.
///
/// Used in this order: make the solver for a number of parameters and constraints, add exactly that many constraints
/// (those left out count as "0 <= 0"), set the objective (before, between or after the constraints), run, read the
/// solution. All parameters are non-negative.
///
/// @tparam T the type of a number
/// @tparam SimplexMatrix a matrix of them
/// @tparam SimplexVector a sequence of them
template <typename T, typename SimplexMatrix, typename SimplexVector>
class VOCORE_TEMPLATE_EXPORT VoLinearProblemAlgorithm
{
public:
    VoLinearProblemAlgorithm() = default;                                           ///< For derived classes.
    VoLinearProblemAlgorithm(const VoLinearProblemAlgorithm&) = default;            ///< Nothing to copy.
    VoLinearProblemAlgorithm& operator=(const VoLinearProblemAlgorithm&) = default; ///< Nothing to copy.
    virtual ~VoLinearProblemAlgorithm(); ///< Solvers are deleted through this base.

    /// coefficients * parameters = bound
    virtual void addEqualityConstraint(const SimplexVector& coefficients, const T& bound) = 0;
    /// coefficients * parameters >= bound
    virtual void addGeqConstraint(const SimplexVector& coefficients, const T& bound) = 0;
    /// coefficients * parameters <= bound
    virtual void addLeqConstraint(const SimplexVector& coefficients, const T& bound) = 0;

    virtual std::size_t numberConstraints() const = 0; ///< As stated when the solver was made.
    virtual std::size_t numberParameters() const = 0;  ///< As stated when the solver was made.
    /// The numbers that the algorithm works on; their arrangement is the algorithm's own.
    virtual const SimplexMatrix& problemMatrix() const = 0;

    /// Works until the solution is found or that many iterations were made. The answer says whether it was found, and
    /// how many iterations this call made.
    virtual VoPair<bool, std::size_t> run(std::size_t maximumIterations) = 0;

    /// Sets the coefficients of the function to be made largest or smallest.
    virtual void setObjective(const SimplexVector& coefficients) = 0;

    virtual bool solutionFound() const = 0;               ///< Whether there is nothing left to improve.
    virtual SimplexVector solutionParameters() const = 0; ///< The values of the parameters.
    virtual const T& solutionValue() const = 0;           ///< The value of the objective.
};

template <typename T, typename SimplexMatrix, typename SimplexVector>
VoLinearProblemAlgorithm<T, SimplexMatrix, SimplexVector>::~VoLinearProblemAlgorithm() = default;
