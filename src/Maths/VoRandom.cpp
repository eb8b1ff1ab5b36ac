#include <Maths/VoRandom.h>

#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoThrow.h>
#include <Core/detail/NumberText.h>
#include <Core/detail/RandomEngine.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <system_error>

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

// e^x for the same reason, accurate to a few units of the last place. With x = k ln 2 + r, |r| < 0.347: 2^k e^r. The
// first part of ln 2 has so few digits that its product with k is exact.
double PortableExp(double x)
{
    if (x > 710)
        return std::numeric_limits<double>::infinity();
    if (x < -746)
        return 0;
    const double k = std::floor(x * 1.4426950408889634 + 0.5);
    const double r = (x - k * 0.693147180369123816490) - k * 1.90821492927058770002e-10;
    double sum = 1;
    for (int i = 14; i >= 1; --i)
        sum = 1 + sum * r / i;
    return std::ldexp(sum, static_cast<int>(k));
}

// The Mersenne twister of 64 bits, whose numbers the language's standard fixes. The standard library's own cannot tell
// its state in a form that another one reads.
class Engine
{
public:
    static constexpr std::size_t Size = 312;
    using Words = std::array<std::uint64_t, Size>;

    Engine(const Words& words, std::size_t drawn)
        : m_words(words)
        , m_drawn(drawn)
    {
    }

    explicit Engine(std::uint64_t seed)
    {
        m_words[0] = seed;
        for (std::size_t i = 1; i < Size; ++i)
            m_words[i] = 6364136223846793005u * (m_words[i - 1] ^ (m_words[i - 1] >> 62)) + i;
    }

    std::uint64_t operator()()
    {
        if (m_drawn == Size)
            twist();
        std::uint64_t word = m_words[m_drawn++];
        word ^= (word >> 29) & 0x5555555555555555u;
        word ^= (word << 17) & 0x71d67fffeda60000u;
        word ^= (word << 37) & 0xfff7eee000000000u;
        return word ^ (word >> 43);
    }

    const Words& words() const { return m_words; }
    std::size_t drawn() const { return m_drawn; }

private:
    void twist()
    {
        constexpr std::uint64_t lower = 0x7fffffff;
        for (std::size_t i = 0; i < Size; ++i) {
            const std::uint64_t joined = (m_words[i] & ~lower) | (m_words[(i + 1) % Size] & lower);
            m_words[i] = m_words[(i + Size / 2) % Size] ^ (joined >> 1) ^ (joined % 2 == 0 ? 0 : 0xb5026f5aa96619e9u);
        }
        m_drawn = 0;
    }

    Words m_words;
    std::size_t m_drawn = Size; // of the words
};

constexpr std::size_t WordDigits = 16;

void RequireRange(double low, double high)
{
    if (!std::isfinite(low) || !std::isfinite(high))
        throw VoDomainException(std::isfinite(low) ? high : low, -std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::max());
    if (low > high)
        vo::detail::ThrowInvalidParameter("Empty range");
}

void RequireDeviation(double sigma)
{
    if (!(sigma >= 0) || !std::isfinite(sigma))
        throw VoDomainException(sigma, 0, std::numeric_limits<double>::max());
}

} // namespace

struct VoRandom::Private
{
    Engine engine;
};

VoRandom::VoRandom(std::uint64_t seed)
    : VoRandom(std::make_unique<Private>(Private{Engine(seed)}))
{
}

VoRandom::VoRandom(std::unique_ptr<Private> state) noexcept
    : m_private(std::move(state))
{
}

VoRandom VoRandom::FromSystem()
{
    vo::detail::RandomEngine source = vo::detail::EngineFromSystem();
    Engine::Words words;
    std::generate(words.begin(), words.end(), std::ref(source));
    return VoRandom(std::make_unique<Private>(Private{Engine(words, Engine::Size)}));
}

VoString VoRandom::state() const
{
    const Engine& engine = m_private ? m_private->engine : Engine(0);
    constexpr const char* digits = "0123456789abcdef";
    std::string text = vo::detail::UnsignedText(engine.drawn()) + ":";
    for (std::uint64_t word : engine.words())
        for (std::size_t digit = WordDigits; digit-- > 0;)
            text += digits[(word >> (4 * digit)) & 15];
    return VoString(text);
}

VoRandom VoRandom::FromState(const VoString& state)
{
    const std::string& text = state.toStdString();
    const std::size_t colon = text.find(':');
    const auto drawn = vo::detail::ParseInteger(text.substr(0, std::min(colon, text.size())));
    const bool isComplete = colon != std::string::npos && text.size() - colon - 1 == WordDigits * Engine::Size;
    if (!isComplete || !drawn || *drawn < 0 || *drawn > static_cast<long long>(Engine::Size))
        vo::detail::ThrowInvalidParameter("Invalid state of a random source");

    Engine::Words words;
    const char* next = text.data() + colon + 1;
    for (std::uint64_t& word : words) {
        const auto [end, error] = std::from_chars(next, next + WordDigits, word, 16);
        if (error != std::errc() || end != next + WordDigits)
            vo::detail::ThrowInvalidParameter("Invalid state of a random source");
        next = end;
    }
    if (std::all_of(words.begin(), words.end(), [](std::uint64_t word) { return word == 0; })) // gives 0 for ever
        vo::detail::ThrowInvalidParameter("Invalid state of a random source");
    return VoRandom(std::make_unique<Private>(Private{Engine(words, static_cast<std::size_t>(*drawn))}));
}

VoRandom::VoRandom(const VoRandom& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}

VoRandom::VoRandom(VoRandom&& other) noexcept = default;

VoRandom& VoRandom::operator=(const VoRandom& other)
{
    m_private = other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr;
    return *this;
}

VoRandom& VoRandom::operator=(VoRandom&& other) noexcept = default;

VoRandom::~VoRandom() = default;

std::uint64_t VoRandom::bits()
{
    if (!m_private)
        *this = VoRandom(0);
    return m_private->engine();
}

std::int64_t VoRandom::integer(std::int64_t low, std::int64_t high)
{
    return vo::detail::DrawInteger(low, high, [this] { return bits(); });
}

double VoRandom::uniform()
{
    return static_cast<double>(bits() >> 11) * 0x1p-53;
}

double VoRandom::uniform(double low, double high)
{
    RequireRange(low, high);
    // Weighted, not stepped: the difference of the two may be too large for a double. Rounding may reach the end.
    for (;;) {
        const double part = uniform();
        const double drawn = low * (1 - part) + high * part;
        if (drawn < high || low == high)
            return std::max(drawn, low);
    }
}

double VoRandom::normal(double mean, double sigma)
{
    RequireDeviation(sigma);
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

double VoRandom::logNormal(double mu, double sigma)
{
    return PortableExp(normal(mu, sigma));
}

double VoRandom::truncatedNormal(double mean, double sigma, double low, double high)
{
    RequireDeviation(sigma);
    RequireRange(low, high);
    const double from = (low - mean) / sigma;
    const double to = (high - mean) / sigma;
    if (sigma == 0 || !std::isfinite(from) || !std::isfinite(to))
        return std::clamp(mean, low, high);
    const double drawn = to < 0 ? -standardNormalBetween(-to, -from) : standardNormalBetween(from, to);
    return std::clamp(mean + sigma * drawn, low, high);
}

// Drawn from the standard normal distribution between two numbers, of which the second is not negative. However far out
// they are, a good part of what is tried is taken.
double VoRandom::standardNormalBetween(double from, double to)
{
    const double rate = from > 0 ? (from + std::sqrt(from * from + 4)) / 2 : 1; // at which the tail falls
    const bool isWide = from > 0 ? to - from > 2 / rate : to - from > 2;
    for (;;) {
        if (isWide && from <= 0) {
            const double drawn = normal(0, 1);
            if (drawn >= from && drawn <= to)
                return drawn;
            continue;
        }
        const double drawn = isWide ? from - PortableLog(1 - uniform()) / rate : from + (to - from) * uniform();
        const double peak = isWide ? rate : std::max(from, 0.0);
        const double distance = isWide ? (drawn - peak) * (drawn - peak) : drawn * drawn - peak * peak;
        if (drawn <= to && -2 * PortableLog(1 - uniform()) >= distance)
            return drawn;
    }
}

std::size_t VoRandom::discrete(const VoVector<double>& weights)
{
    const double largest = weights.isEmpty() ? 0.0 : *std::max_element(weights.begin(), weights.end());
    double sum = 0;
    for (double weight : weights) {
        if (!(weight >= 0) || !std::isfinite(weight))
            throw VoDomainException(weight, 0, std::numeric_limits<double>::max());
        sum += weight / largest;
    }
    if (!(largest > 0))
        vo::detail::ThrowInvalidParameter("No weight is greater than zero");

    double left = uniform() * sum;
    std::size_t chosen = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (weights.data()[i] == 0)
            continue;
        chosen = i; // rounding may leave a rest behind the last one
        left -= weights.data()[i] / largest;
        if (left < 0)
            break;
    }
    return chosen;
}
