#pragma once

#include <Core/VoExport.h>
#include <Core/VoVector.h>

#include <cstddef>

class VoLinearProblem;
template <typename T, bool Maximise>
class VoSimplexAlgorithm;

/// An answer to a linear problem, as somebody claims it.
struct VOCORE_EXPORT VoLinearProblemSolution
{
    VoVector<double> parameters; ///< One value for each parameter.
    double value = 0;            ///< The objective there.
    /// What one unit more of each constraint's bound would change the value by: with the right ones the optimum can be
    /// proven. Empty when they are not known.
    VoVector<double> multipliers;

    bool found = false;               ///< Whether the solver says that this is the optimum.
    std::size_t iterations = 0;       ///< Iterations made.
    bool zeroRatioPassedOver = false; ///< See VoSimplexAlgorithm::zeroRatioPassedOver().

    /// What a solver's tableau says.
    /// @{
    static VoLinearProblemSolution Of(const VoSimplexAlgorithm<double, true>& algorithm);
    static VoLinearProblemSolution Of(const VoSimplexAlgorithm<double, false>& algorithm);
    /// @}

    /// Makes a VoSimplexAlgorithm of the problem and runs it. The answer may be wrong: see there and
    /// VoLinearProblemCertificate.
    /// @throws VoInvalidCallException for a problem of a shape that the solver does not take, and "No pivot row can be
    /// found"
    /// @throws VoOverflowException when the tableau would be too large
    static VoLinearProblemSolution Solve(const VoLinearProblem& problem, std::size_t maximumIterations);
};
