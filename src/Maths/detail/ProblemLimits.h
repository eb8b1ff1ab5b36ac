#pragma once

#include <Maths/VoLinearProblemExceptions.h>

#include <cmath>
#include <cstddef>

/// @file
/// What every way of stating a linear problem refuses.

namespace vo::detail {

/// Whether the tableau of a problem stays within 100,000,000 cells, the most that the solver takes.
inline bool FitsTableau(std::size_t variables, std::size_t constraints)
{
    constexpr std::size_t mostCells = 100'000'000;
    // Each alone first: the sum below cannot overflow then.
    return variables <= mostCells && constraints <= mostCells &&
           variables + constraints + 2 <= mostCells / (constraints + 1);
}

/// @throws VoInvalidCoefficientException "Coefficient is not a finite number"
inline void RequireFinite(double value)
{
    if (!std::isfinite(value))
        throw VoInvalidCoefficientException("Coefficient is not a finite number");
}

} // namespace vo::detail
