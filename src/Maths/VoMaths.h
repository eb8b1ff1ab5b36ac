#pragma once

#include <Core/VoExport.h>

/// Small mathematical helpers. All members are static and safe from any thread.
class VOCORE_EXPORT VoMaths
{
public:
    VoMaths() = delete;

    /// An integer drawn uniformly from the closed range `low` .. `high`.
    ///
    /// Each thread has its own generator, seeded from the system's random device; see VoRandom for draws that can be
    /// repeated.
    /// @throws VoInvalidParameterException with "Empty range" when `low` is greater than `high`
    static long long RandomInteger(long long low, long long high);

    /// True when the two numbers differ by no more than 1e-9 of the larger magnitude, or by no more than 1e-12 in all.
    /// Equal infinities are nearly equal; NaN never is.
    static bool NearlyEqual(double a, double b);

    /// True when the two numbers differ by no more than 1e-10 times the largest of 1 and their magnitudes. Equal
    /// infinities are equal; NaN never is.
    static bool Equal(double a, double b);

    /// Equal() to 0.
    static bool IsZero(double value);

    /// The number of the closed range `low` .. `high` that is nearest to `value`; NaN stays NaN.
    /// @throws VoDomainException when `low` is greater than `high` or one of them is NaN
    static double Clamp(double value, double low, double high);

    /// The number with that many decimal places, or with zeros in that many places before the point when `digits` is
    /// negative, that is nearest to the exact value; half way between two, the one of larger magnitude. 2.675 lies
    /// below half way, so that Round(2.675, 2) is 2.67. The result is the nearest double to that number. Infinities and
    /// NaN stay.
    /// @throws VoDomainException when `digits` is not in -22 .. 22
    static double Round(double value, int digits);

    /// The height at `x` of the straight line through (`x0`, `y0`) and (`x1`, `y1`), exact at both; also where the
    /// distance of the two is more than a double holds.
    /// @throws VoDivideByZeroException when `x0` equals `x1`
    static double Interpolate(double x, double x0, double y0, double x1, double y1);

    /// Interpolate() over an axis that is divided logarithmically, as frequencies mostly are; exact at both ends.
    /// @throws VoDomainException when one of `x`, `x0` and `x1` is not a finite number above 0
    /// @throws VoDivideByZeroException when `x0` equals `x1`
    static double InterpolateLogarithmic(double x, double x0, double y0, double x1, double y1);

    /// The ratio of two amplitudes (voltages, currents) in decibels: 20 log10(ratio); -infinity for 0. That of two
    /// powers is half of it.
    /// @throws VoDomainException when `ratio` is negative or NaN
    static double Decibels(double ratio);
    static double RatioOfDecibels(double decibels); ///< The ratio of amplitudes that Decibels() gives so many for.

    static double DegreesToRadians(double degrees); ///< An angle of degrees in radians.
    static double RadiansToDegrees(double radians); ///< An angle of radians in degrees.
};
