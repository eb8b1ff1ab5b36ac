#pragma once

#include <Core/VoForward.h>

namespace vo::detail {

/// One entry of a table of units, in ascending order; the last is used for all larger numbers.
struct QuantityUnit
{
    double below;     ///< Numbers below this are shown in the unit.
    double divisor;   ///< What the number is divided by.
    const char* name; ///< What follows the number and one blank.
};

/// `number` in the first fitting of `units`, with one decimal: "999.0 B". The same
/// in every locale.
VoString FormatQuantity(double number, const QuantityUnit* units);

} // namespace vo::detail
