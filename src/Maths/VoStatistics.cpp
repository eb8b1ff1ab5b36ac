#include <Maths/VoStatistics.h>

#include <Core/VoMathsException.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr double Nothing = std::numeric_limits<double>::quiet_NaN();

} // namespace

struct VoStatistics::Private
{
    std::vector<double> values;
    std::size_t notNumbers = 0;
    double mean = 0;
    double squares = 0; // sum of the squared distances to the mean
    double min = std::numeric_limits<double>::infinity();
    double max = -std::numeric_limits<double>::infinity();
};

VoStatistics::VoStatistics()
    : d(std::make_unique<Private>())
{
}

VoStatistics::VoStatistics(const VoVector<double>& values)
    : VoStatistics()
{
    d->values.reserve(values.size());
    for (double value : values)
        add(value);
}

VoStatistics::VoStatistics(const VoStatistics& other)
    : d(std::make_unique<Private>(other.state()))
{
}

VoStatistics::VoStatistics(VoStatistics&& other) noexcept = default;

VoStatistics& VoStatistics::operator=(const VoStatistics& other)
{
    d = std::make_unique<Private>(other.state());
    return *this;
}

VoStatistics& VoStatistics::operator=(VoStatistics&& other) noexcept = default;

VoStatistics::~VoStatistics() = default;

const VoStatistics::Private& VoStatistics::state() const
{
    static const Private empty;
    return d ? *d : empty;
}

VoStatistics::Private& VoStatistics::own()
{
    if (!d)
        d = std::make_unique<Private>();
    return *d;
}

void VoStatistics::add(double value)
{
    Private& sample = own();
    if (std::isnan(value)) {
        ++sample.notNumbers;
        return;
    }
    sample.values.push_back(value);
    const double distance = value - sample.mean;
    sample.mean += distance / static_cast<double>(sample.values.size());
    sample.squares += distance * (value - sample.mean);
    sample.min = std::min(sample.min, value);
    sample.max = std::max(sample.max, value);
}

void VoStatistics::merge(const VoStatistics& other)
{
    if (&other == this)
        return merge(VoStatistics(other));

    Private& sample = own();
    const Private& more = other.state();
    const auto mine = static_cast<double>(sample.values.size());
    const auto theirs = static_cast<double>(more.values.size());
    sample.values.insert(sample.values.end(), more.values.begin(), more.values.end());
    sample.notNumbers += more.notNumbers;
    if (more.values.empty())
        return;
    const double distance = more.mean - sample.mean;
    sample.squares += more.squares + distance * distance * (mine * theirs / (mine + theirs));
    sample.mean += distance * (theirs / (mine + theirs));
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

double VoStatistics::mean() const
{
    return count() == 0 ? Nothing : state().mean;
}

double VoStatistics::variance() const
{
    return count() < 2 ? Nothing : state().squares / static_cast<double>(count() - 1);
}

double VoStatistics::standardDeviation() const
{
    return std::sqrt(variance());
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
