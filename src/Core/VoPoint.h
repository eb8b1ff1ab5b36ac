#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <functional>
#include <iosfwd>

/// A point of whole coordinates.
struct VOCORE_EXPORT VoPoint
{
    int x = 0; ///< From left to right.
    int y = 0; ///< In the direction that the user of the point defines.

    constexpr VoPoint() noexcept = default; ///< The origin.
    /// The point of both coordinates.
    constexpr VoPoint(int xCoordinate, int yCoordinate) noexcept
        : x(xCoordinate)
        , y(yCoordinate)
    {
    }

    /// Comparison of both coordinates.
    /// @{
    friend constexpr bool operator==(const VoPoint& a, const VoPoint& b) noexcept { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(const VoPoint& a, const VoPoint& b) noexcept { return !(a == b); }
    /// @}

    /// Writes "(x, y)".
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoPoint& point);
};

/// Hash of both coordinates.
template <>
struct std::hash<VoPoint>
{
    /// Agrees with ==.
    std::size_t operator()(const VoPoint& point) const noexcept
    {
        return std::hash<int>()(point.x) * 31 + std::hash<int>()(point.y);
    }
};
