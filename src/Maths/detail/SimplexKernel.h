#pragma once

#include <Core/VoExport.h>

#include <cstddef>

/// @file
/// The inner loops of the simplex method. Their source is compiled without contraction of products and sums, and where
/// the compiler can, once for each generation of processors: every variant gives the same bits.

namespace vo::detail {

/// What DivideRow() met.
struct RowContent
{
    bool finite = true;        ///< No infinity and no NaN.
    bool negativeZero = false; ///< Some cell is -0.0.
};

/// Divides `count` cells by `divisor`.
VOCORE_PRIVATE_EXPORT RowContent DivideRow(double* cells, double divisor, std::size_t count);

/// target -= factor * source, cell by cell. The two do not overlap.
VOCORE_PRIVATE_EXPORT void SubtractScaledRow(double* target, const double* source, double factor, std::size_t count);

/// Whether some cell is -0.0.
VOCORE_PRIVATE_EXPORT bool HoldsNegativeZero(const double* cells, std::size_t count);

} // namespace vo::detail
