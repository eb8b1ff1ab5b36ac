#include <Maths/VoMaths.h>

#include <Core/VoMathsException.h>
#include <Core/VoThrow.h>
#include <Maths/VoRandom.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int MostDigits = 22; // the largest power of ten that a double holds exactly

double PowerOfTen(int exponent)
{
    double power = 1;
    for (int i = 0; i < exponent; ++i)
        power *= 10;
    return power;
}

// The integer next to an exact value that is known as the nearest double and the sign of what that lacks.
double RoundHalfAway(double nearest, double lacking)
{
    const double toZero = std::trunc(nearest);
    const bool reachesHalf = std::fabs(nearest - toZero) == 0.5;
    const bool exactIsNearerToZero = lacking != 0 && std::signbit(lacking) != std::signbit(nearest);
    return reachesHalf && exactIsNearerToZero ? toZero : std::round(nearest);
}

} // namespace

long long VoMaths::RandomInteger(long long low, long long high)
{
    thread_local VoRandom generator = VoRandom::FromSystem();
    return generator.integer(low, high);
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
    if (!std::isfinite(scaled))
        return value; // too large to have decimals, or no number
    // What the rounding of `scaled` lost has the sign of this, exactly.
    const double lacking = digits < 0 ? std::fma(-scaled, power, value) : std::fma(value, power, -scaled);
    const double rounded = RoundHalfAway(scaled, lacking);
    if (rounded == scaled && lacking != 0 && digits > 0)
        return value; // so large that its last bit is worth more than the last digit
    return digits < 0 ? rounded * power : rounded / power;
}

double VoMaths::Interpolate(double x, double x0, double y0, double x1, double y1)
{
    if (x0 == x1)
        throw VoDivideByZeroException();
    const double t = (x - x0) / (x1 - x0);
    // From the nearer end, so that both ends are met exactly.
    return t < 0.5 ? y0 + t * (y1 - y0) : y1 - (x1 - x) / (x1 - x0) * (y1 - y0);
}

double VoMaths::DegreesToRadians(double degrees)
{
    return degrees * (3.14159265358979323846 / 180.0);
}
