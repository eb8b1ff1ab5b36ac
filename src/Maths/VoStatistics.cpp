#include <Maths/VoStatistics.h>

#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoThrow.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using Values = std::vector<double>;

constexpr double Nothing = std::numeric_limits<double>::quiet_NaN();

double Count(const Values& values)
{
    return static_cast<double>(values.size());
}

// What values are multiplied by, exactly, so that no sum of theirs is too large for a double.
double UnitOf(double largest)
{
    return largest >= 0x1p900 ? 0x1p-128 : 1.0;
}

// A number in two parts, of which the second is what the first lacks.
struct Exact
{
    double high = 0;
    double low = 0;

    void add(double added)
    {
        const double sum = high + added;
        low += std::fabs(high) >= std::fabs(added) ? (high - sum) + added : (added - sum) + high;
        high = sum;
    }

    double value() const { return std::isfinite(low) ? high + low : high; } // infinities lack nothing
};

// The sum of values times a unit.
Exact SumOf(const Values& values, double unit)
{
    Exact sum;
    for (double value : values)
        sum.add(value * unit);
    return sum;
}

Exact MeanOf(const Values& values, double unit)
{
    const Exact sum = SumOf(values, unit);
    const double mean = sum.high / Count(values);
    return {mean, std::isfinite(mean) ? (std::fma(-mean, Count(values), sum.high) + sum.low) / Count(values) : 0.0};
}

// The sums of the powers of the distances to the mean, the largest distance taken for about 1.
struct Moments
{
    double second = 0;
    double third = 0;
    double fourth = 0;
    int exponent = 0; // of two: what a distance of 1 stands for
};

Moments MomentsOf(const Values& values, double low, double high)
{
    if (low == high && std::isfinite(low))
        return {};
    const double unit = UnitOf(std::max(std::fabs(low), std::fabs(high)));
    const Exact mean = MeanOf(values, unit);
    const double farthest = std::max(high * unit - mean.high, mean.high - low * unit);
    if (!std::isfinite(farthest))
        return {Nothing, Nothing, Nothing, 0};
    int exponent = 0;
    std::frexp(farthest, &exponent);
    Exact second;
    Exact third;
    Exact fourth;
    for (double value : values) {
        const double distance = std::ldexp((value * unit - mean.high) - mean.low, -exponent);
        const double square = distance * distance;
        second.add(square);
        third.add(square * distance);
        fourth.add(square * square);
    }
    return {second.value(), third.value(), fourth.value(), exponent + (unit == 1.0 ? 0 : 128)};
}

// The solution of a rising function in a range, to the last place.
template <typename Function>
double Solve(Function function, double wanted, double low, double high)
{
    for (;;) {
        const double middle = low + (high - low) / 2;
        if (!(middle > low && middle < high))
            return middle;
        (function(middle) < wanted ? low : high) = middle;
    }
}

// How many standard deviations around its mean hold that part of a normal distribution.
double NormalReach(double confidence)
{
    return Solve([](double z) { return std::erf(z / std::sqrt(2.0)); }, confidence, 0, 40);
}

// The part of Student's distribution within tan(angle) * sqrt(degrees) of 0: a finite sum.
double StudentPart(double angle, std::size_t degrees)
{
    constexpr double pi = 3.14159265358979323846;
    const double cosine = std::cos(angle);
    const bool odd = degrees % 2 == 1;
    double term = odd ? cosine : 1.0;
    double sum = degrees == 1 ? 0.0 : term;
    for (std::size_t power = odd ? 3 : 2; power + 2 <= degrees; power += 2) {
        const auto divisor = static_cast<double>(power);
        term *= cosine * cosine * (divisor - 1) / divisor;
        sum += term;
    }
    return odd ? 2 / pi * (angle + std::sin(angle) * sum) : std::sin(angle) * sum;
}

// How many standard errors around the mean of a sample hold the mean with that confidence: the quantile of Student's
// distribution. From many degrees of freedom on its series about the normal one has more digits than the sum.
double StudentReach(double confidence, std::size_t degrees)
{
    const auto n = static_cast<double>(degrees);
    if (degrees < 300)
        return std::sqrt(n) * std::tan(Solve([degrees](double angle) { return StudentPart(angle, degrees); },
                                             confidence, 0, 1.57079632679489661923));
    const double z = NormalReach(confidence);
    const double square = z * z;
    const double first = (square + 1) * z / 4;
    const double second = ((5 * square + 16) * square + 3) * z / 96;
    const double third = (((3 * square + 19) * square + 17) * square - 15) * z / 384;
    return z + first / n + second / (n * n) + third / (n * n * n);
}

void RequireConfidence(double confidence)
{
    if (!(confidence > 0 && confidence < 1))
        throw VoDomainException(confidence, 0, 1);
}

} // namespace

struct VoStatistics::Private
{
    std::vector<double> values;
    std::size_t notNumbers = 0;
    double min = std::numeric_limits<double>::infinity();
    double max = -std::numeric_limits<double>::infinity();

    double largest() const { return std::max(std::fabs(min), std::fabs(max)); }
    Moments moments() const { return MomentsOf(values, min, max); }
};

VoStatistics::VoStatistics()
    : m_private(std::make_unique<Private>())
{
}

VoStatistics::VoStatistics(const VoVector<double>& values)
    : VoStatistics()
{
    m_private->values.reserve(values.size());
    for (double value : values)
        add(value);
}

VoStatistics::VoStatistics(const VoStatistics& other)
    : m_private(std::make_unique<Private>(other.state()))
{
}

VoStatistics::VoStatistics(VoStatistics&& other) noexcept = default;

VoStatistics& VoStatistics::operator=(const VoStatistics& other)
{
    m_private = std::make_unique<Private>(other.state());
    return *this;
}

VoStatistics& VoStatistics::operator=(VoStatistics&& other) noexcept = default;

VoStatistics::~VoStatistics() = default;

const VoStatistics::Private& VoStatistics::state() const
{
    static const auto& empty = *new Private; // outlives all static objects
    return m_private ? *m_private : empty;
}

VoStatistics::Private& VoStatistics::own()
{
    if (!m_private)
        m_private = std::make_unique<Private>();
    return *m_private;
}

void VoStatistics::add(double value)
{
    Private& sample = own();
    if (std::isnan(value)) {
        ++sample.notNumbers;
        return;
    }
    sample.values.push_back(value);
    sample.min = std::min(sample.min, value);
    sample.max = std::max(sample.max, value);
}

void VoStatistics::merge(const VoStatistics& other)
{
    if (&other == this)
        return merge(VoStatistics(other));

    Private& sample = own();
    const Private& more = other.state();
    sample.values.insert(sample.values.end(), more.values.begin(), more.values.end());
    sample.notNumbers += more.notNumbers;
    sample.min = std::min(sample.min, more.min);
    sample.max = std::max(sample.max, more.max);
}

std::size_t VoStatistics::count() const
{
    return state().values.size();
}

std::size_t VoStatistics::notNumbers() const
{
    return state().notNumbers;
}

double VoStatistics::sum() const
{
    const double unit = UnitOf(count() == 0 ? 0.0 : state().largest());
    return SumOf(state().values, unit).value() / unit;
}

double VoStatistics::mean() const
{
    if (count() == 0)
        return Nothing;
    const double unit = UnitOf(state().largest());
    return MeanOf(state().values, unit).value() / unit;
}

double VoStatistics::variance() const
{
    if (count() < 2)
        return Nothing;
    const Moments moments = state().moments();
    return std::ldexp(moments.second / static_cast<double>(count() - 1), 2 * moments.exponent);
}

double VoStatistics::standardDeviation() const
{
    if (count() < 2)
        return Nothing;
    const Moments moments = state().moments(); // the variance may be too large or too small for a double
    return std::ldexp(std::sqrt(moments.second / static_cast<double>(count() - 1)), moments.exponent);
}

double VoStatistics::skewness() const
{
    if (count() < 3)
        return Nothing;
    const Moments moments = state().moments();
    const auto n = static_cast<double>(count());
    const double variance = moments.second / n;
    return moments.third / n / (variance * std::sqrt(variance)) * (std::sqrt(n * (n - 1)) / (n - 2));
}

double VoStatistics::kurtosis() const
{
    if (count() < 4)
        return Nothing;
    const Moments moments = state().moments();
    const auto n = static_cast<double>(count());
    const double variance = moments.second / n;
    const double excess = moments.fourth / n / (variance * variance) - 3;
    return (n - 1) / ((n - 2) * (n - 3)) * ((n + 1) * excess + 6);
}

VoPair<double, double> VoStatistics::meanInterval(double confidence) const
{
    RequireConfidence(confidence);
    if (count() < 2)
        return {Nothing, Nothing};
    const double error = standardDeviation() / std::sqrt(Count(state().values));
    const double reach = StudentReach(confidence, count() - 1) * error;
    const double middle = mean();
    return {middle - reach, middle + reach};
}

double VoStatistics::yield(double low, double high) const
{
    const Values& values = state().values;
    const auto within = std::count_if(values.begin(), values.end(),
                                      [low, high](double value) { return value >= low && value <= high; });
    const auto all = static_cast<double>(values.size() + state().notNumbers);
    return all > 0 ? static_cast<double>(within) / all : Nothing;
}

VoPair<double, double> VoStatistics::yieldInterval(double low, double high, double confidence) const
{
    RequireConfidence(confidence);
    const double part = yield(low, high);
    const auto n = static_cast<double>(count() + notNumbers());
    const double z = NormalReach(confidence);
    const double middle = (part + z * z / (2 * n)) / (1 + z * z / n);
    const double reach = z / (1 + z * z / n) * std::sqrt(part * (1 - part) / n + z * z / (4 * n * n));
    return {part == 0 ? 0.0 : middle - reach, part == 1 ? 1.0 : middle + reach};
}

double VoStatistics::Correlation(const VoVector<double>& x, const VoVector<double>& y)
{
    if (x.size() != y.size())
        vo::detail::ThrowInvalidParameter("Samples of different sizes");
    VoStatistics first;
    VoStatistics second;
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (std::isnan(x.data()[i]) || std::isnan(y.data()[i]))
            continue;
        first.add(x.data()[i]);
        second.add(y.data()[i]);
    }
    if (first.count() < 2)
        return Nothing;
    const double firstMean = first.mean();
    const double secondMean = second.mean();
    const double firstUnit = first.standardDeviation();
    const double secondUnit = second.standardDeviation();
    double sum = 0;
    for (std::size_t i = 0; i < first.count(); ++i)
        sum += (first.state().values[i] / firstUnit - firstMean / firstUnit) *
               (second.state().values[i] / secondUnit - secondMean / secondUnit);
    const double correlation = sum / static_cast<double>(first.count() - 1);
    return std::isnan(correlation) ? Nothing : std::clamp(correlation, -1.0, 1.0);
}

double VoStatistics::min() const
{
    return count() == 0 ? Nothing : state().min;
}

double VoStatistics::max() const
{
    return count() == 0 ? Nothing : state().max;
}

double VoStatistics::median() const
{
    return quantile(0.5);
}

double VoStatistics::quantile(double q) const
{
    if (!(q >= 0 && q <= 1))
        throw VoDomainException(q, 0, 1);
    if (count() == 0)
        return Nothing;

    std::vector<double> values = state().values;
    const double position = q * static_cast<double>(values.size() - 1);
    const auto below = std::min(static_cast<std::size_t>(position), values.size() - 1);
    const auto reached = values.begin() + static_cast<std::ptrdiff_t>(below);
    std::nth_element(values.begin(), reached, values.end());
    const double fraction = position - static_cast<double>(below);
    if (fraction == 0)
        return *reached;
    const double next = *std::min_element(reached + 1, values.end());
    // Weighted, not stepped: the difference of two values may be too large for a double.
    return *reached == next ? next : (1 - fraction) * *reached + fraction * next;
}
