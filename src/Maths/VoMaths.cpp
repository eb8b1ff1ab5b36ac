#include <Maths/VoMaths.h>

#include <Core/VoThrow.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>

namespace {

std::mt19937_64& Generator()
{
    thread_local std::mt19937_64 generator = [] {
        std::random_device device;
        std::array<unsigned, 8> numbers;
        std::generate(numbers.begin(), numbers.end(), std::ref(device));
        std::seed_seq seed(numbers.begin(), numbers.end());
        return std::mt19937_64(seed);
    }();
    return generator;
}

} // namespace

long long VoMaths::RandomInteger(long long low, long long high)
{
    if (low > high)
        vo::detail::ThrowInvalidParameter("Empty range");
    return std::uniform_int_distribution<long long>(low, high)(Generator());
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
