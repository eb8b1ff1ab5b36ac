#include <Maths/VoRandom.h>

#include <Core/VoMathsException.h>
#include <Core/VoThrow.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

namespace {

// The natural logarithm of a number in (0, 1), from the four basic operations only: the C library's differs in the last
// bit between platforms, which would be enough to lose the repetition of a run. Accurate to a few units of the last
// place. With x = m * 2^e and s = (m - 1) / (m + 1): ln x = e ln 2 + 2 (s + s^3/3 + s^5/5 + ...), |s| < 0.172.
double PortableLog(double x)
{
    int exponent = 0;
    double mantissa = std::frexp(x, &exponent);
    if (mantissa < 0.70710678118654752) {
        mantissa *= 2;
        --exponent;
    }
    const double s = (mantissa - 1) / (mantissa + 1);
    const double square = s * s;
    double sum = 0;
    for (int odd = 23; odd >= 1; odd -= 2)
        sum = sum * square + 1.0 / odd;
    return exponent * 0.69314718055994531 + 2 * s * sum;
}

} // namespace

struct VoRandom::Private
{
    // The engine's numbers are fixed by the language's standard; its distributions are not and are not used.
    std::mt19937_64 engine;
};

VoRandom::VoRandom(std::uint64_t seed)
    : VoRandom(std::make_unique<Private>(Private{std::mt19937_64(seed)}))
{
}

VoRandom::VoRandom(std::unique_ptr<Private> state) noexcept
    : d(std::move(state))
{
}

VoRandom VoRandom::FromSystem()
{
    std::random_device device;
    std::array<unsigned, 8> numbers;
    std::generate(numbers.begin(), numbers.end(), std::ref(device));
    std::seed_seq seed(numbers.begin(), numbers.end());
    return VoRandom(std::make_unique<Private>(Private{std::mt19937_64(seed)}));
}

VoRandom::VoRandom(const VoRandom& other)
    : d(other.d ? std::make_unique<Private>(*other.d) : nullptr)
{
}

VoRandom::VoRandom(VoRandom&& other) noexcept = default;

VoRandom& VoRandom::operator=(const VoRandom& other)
{
    d = other.d ? std::make_unique<Private>(*other.d) : nullptr;
    return *this;
}

VoRandom& VoRandom::operator=(VoRandom&& other) noexcept = default;

VoRandom::~VoRandom() = default;

std::uint64_t VoRandom::bits()
{
    if (!d)
        *this = VoRandom(0);
    return d->engine();
}

std::int64_t VoRandom::integer(std::int64_t low, std::int64_t high)
{
    if (low > high)
        vo::detail::ThrowInvalidParameter("Empty range");
    const std::uint64_t range = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;
    if (range == 0) // all 2^64 integers
        return static_cast<std::int64_t>(bits());
    // Numbers beyond the last whole multiple of the range would make the lower results likelier.
    const std::uint64_t rejected = (std::numeric_limits<std::uint64_t>::max() - range + 1) % range;
    std::uint64_t drawn = bits();
    while (drawn > std::numeric_limits<std::uint64_t>::max() - rejected)
        drawn = bits();
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(low) + drawn % range);
}

double VoRandom::uniform()
{
    return static_cast<double>(bits() >> 11) * 0x1p-53;
}

double VoRandom::normal(double mean, double sigma)
{
    if (!(sigma >= 0) || !std::isfinite(sigma))
        throw VoDomainException(sigma, 0, std::numeric_limits<double>::max());
    // Marsaglia's polar method: a point drawn in the unit circle. Its second number is let go, so that the state is the
    // engine's alone.
    for (;;) {
        const double x = 2 * uniform() - 1;
        const double y = 2 * uniform() - 1;
        const double square = x * x + y * y;
        if (square < 1 && square > 0)
            return mean + sigma * (x * std::sqrt(-2 * PortableLog(square) / square));
    }
}
