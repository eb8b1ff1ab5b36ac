#include <Maths/VoMaths.h>

#include <Core/VoMathsException.h>
#include <Core/detail/RandomEngine.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int MostDigits = 22; // the largest power of ten that a double holds exactly

double PowerOfTen(int exponent)
{
    double power = 1;
    for (int i = 0; i < exponent; ++i)
        power *= 10;
    return power;
}

constexpr double Pi = 3.14159265358979323846;
constexpr double MostWithUnits = 0x1p53; // from here on doubles are further apart than 1

// The integer next to an exact value that is known as its nearest double, below 2^53, and what that lacks, in units.
double RoundHalfAway(double nearest, double lacking)
{
    const double away = std::copysign(1.0, nearest);
    const double toZero = std::trunc(nearest);
    const double fraction = away * (nearest - toZero);
    const double rest = away * lacking;
    // Each sum is exact or far from the half that it is compared with.
    if (fraction == 0.5)
        return rest < 0 ? toZero : toZero + away;
    if (fraction == 0)
        return rest >= 0.5 ? toZero + away : toZero; // only beyond 2^52 can so much be lacking
    return fraction > 0.5 ? toZero + away : toZero;  // some libraries round the number before a half up
}

// How far along the way from one number to another, whose distances a double may be too small for.
double Fraction(double x, double from, double to)
{
    const double whole = to - from;
    return std::isfinite(whole) ? (x - from) / whole : (x / 2 - from / 2) / (to / 2 - from / 2);
}

} // namespace

long long VoMaths::RandomInteger(long long low, long long high)
{
    return vo::detail::RandomInteger(low, high);
}

bool VoMaths::NearlyEqual(double a, double b)
{
    if (a == b)
        return true;
    if (!std::isfinite(a) || !std::isfinite(b))
        return false;
    const double difference = std::fabs(a - b);
    return difference <= 1e-12 || difference <= 1e-9 * std::max(std::fabs(a), std::fabs(b));
}

bool VoMaths::Equal(double a, double b)
{
    if (a == b)
        return true;
    if (!std::isfinite(a) || !std::isfinite(b))
        return false;
    return std::fabs(a - b) <= 1e-10 * std::max({1.0, std::fabs(a), std::fabs(b)});
}

bool VoMaths::IsZero(double value)
{
    return Equal(value, 0.0);
}

double VoMaths::Clamp(double value, double low, double high)
{
    if (!(low <= high))
        throw VoDomainException(value, low, high);
    return value < low ? low : value > high ? high : value;
}

double VoMaths::Round(double value, int digits)
{
    if (digits < -MostDigits || digits > MostDigits)
        throw VoDomainException(digits, -MostDigits, MostDigits);

    const double power = PowerOfTen(std::abs(digits));
    const double scaled = digits < 0 ? value / power : value * power;
    if (!(std::fabs(scaled) < MostWithUnits))
        return value; // the nearest double to the rounded number, or no number
    // What the rounding of `scaled` lost, exactly.
    const double lacking = digits < 0 ? std::fma(-scaled, power, value) / power : std::fma(value, power, -scaled);
    const double rounded = RoundHalfAway(scaled, lacking);
    // Both are exact, so that the result is the nearest double to their quotient or product.
    return digits < 0 ? rounded * power : rounded / power;
}

double VoMaths::Interpolate(double x, double x0, double y0, double x1, double y1)
{
    if (x0 == x1)
        throw VoDivideByZeroException();
    const double t = Fraction(x, x0, x1);
    const double rise = y1 - y0;
    if (!std::isfinite(rise))
        return Fraction(x, x1, x0) * y0 + t * y1;
    // From the nearer end, so that both ends are met exactly.
    return t < 0.5 ? y0 + t * rise : y1 - Fraction(x, x1, x0) * rise;
}

double VoMaths::InterpolateLogarithmic(double x, double x0, double y0, double x1, double y1)
{
    constexpr double smallest = std::numeric_limits<double>::denorm_min();
    constexpr double largest = std::numeric_limits<double>::max();
    for (double place : {x, x0, x1})
        if (!(place >= smallest && place <= largest))
            throw VoDomainException(place, smallest, largest);
    if (x0 == x1)
        throw VoDivideByZeroException();
    if (x == x0 || x == x1)
        return x == x0 ? y0 : y1;
    return Interpolate(std::log(x), std::log(x0), y0, std::log(x1), y1);
}

double VoMaths::Decibels(double ratio)
{
    if (!(ratio >= 0))
        throw VoDomainException(ratio, 0, std::numeric_limits<double>::infinity());
    return 20 * std::log10(ratio);
}

double VoMaths::RatioOfDecibels(double decibels)
{
    return std::pow(10.0, decibels / 20);
}

double VoMaths::RadiansToDegrees(double radians)
{
    return radians * (180.0 / Pi);
}

double VoMaths::DegreesToRadians(double degrees)
{
    return degrees * (Pi / 180.0);
}
