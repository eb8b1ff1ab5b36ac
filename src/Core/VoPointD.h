#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <functional>
#include <iosfwd>

/// A point of real coordinates.
struct VOCORE_EXPORT VoPointD
{
    double x = 0; ///< From left to right.
    double y = 0; ///< In the direction that the user of the point defines.

    constexpr VoPointD() noexcept = default; ///< The origin.
    /// The point of both coordinates.
    constexpr VoPointD(double xCoordinate, double yCoordinate) noexcept
        : x(xCoordinate)
        , y(yCoordinate)
    {
    }

    /// Comparison of both coordinates, as numbers: a point with NaN equals none.
    /// @{
    friend constexpr bool operator==(const VoPointD& a, const VoPointD& b) noexcept { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(const VoPointD& a, const VoPointD& b) noexcept { return !(a == b); }
    /// @}

    /// Writes "(x, y)", each with six significant digits.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoPointD& point);
};

/// Hash of both coordinates.
template <>
struct std::hash<VoPointD>
{
    /// Agrees with ==.
    std::size_t operator()(const VoPointD& point) const noexcept
    {
        return std::hash<double>()(point.x) * 31 + std::hash<double>()(point.y);
    }
};
