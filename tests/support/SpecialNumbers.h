#pragma once

#include <limits>

namespace vo::test {

inline constexpr double Infinity = std::numeric_limits<double>::infinity();
inline constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace vo::test
