#include <Time/VoTimeDuration.h>

#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Time/detail/DurationText.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <ostream>
#include <string>

namespace {

struct Unit
{
    std::uint64_t nanoseconds;
    const char* name;
};

constexpr Unit Units[] = {{3600000000000, "h"}, {60000000000, "min"}, {1000000000, "s"},
                          {1000000, "ms"},      {1000, "us"},         {1, "ns"}};

std::uint64_t Magnitude(std::int64_t count)
{
    const auto bits = static_cast<std::uint64_t>(count);
    return count < 0 ? 0 - bits : bits;
}

// The thousandths behind the decimal point, without zeros at the end.
std::string Fraction(std::uint64_t thousandths)
{
    if (thousandths == 0)
        return {};
    std::string digits = std::to_string(1000 + thousandths);
    digits.front() = '.';
    while (digits.back() == '0')
        digits.pop_back();
    return digits;
}

} // namespace

VoTimeDuration VoTimeDuration::FromSeconds(double seconds) noexcept
{
    // The first doubles that no longer fit are the powers themselves: 2^63 and beyond.
    constexpr double limit = 9223372036854775808.0;
    const double nanoseconds = std::round(seconds * 1e9);
    if (std::isnan(nanoseconds))
        return {};
    if (nanoseconds >= limit)
        return Max();
    if (nanoseconds <= -limit)
        return Min();
    return VoNanoseconds(static_cast<std::int64_t>(nanoseconds));
}

VoString VoTimeDuration::toString() const
{
    const std::uint64_t magnitude = Magnitude(m_count);
    const Unit* unit = Units;
    while (unit != std::end(Units) - 1 && magnitude < unit->nanoseconds)
        ++unit;
    // Cut, not rounded: 59.9996 s must not become "60 s" when a minute would be "1 min".
    const std::uint64_t whole = magnitude / unit->nanoseconds;
    const std::uint64_t rest = magnitude % unit->nanoseconds;
    const std::uint64_t thousandths = unit->nanoseconds < 1000 ? 0 : rest / (unit->nanoseconds / 1000);
    return VoString((m_count < 0 ? "-" : "") + std::to_string(whole) + Fraction(thousandths) + ' ' + unit->name);
}

VoTimeDuration::Parts VoTimeDuration::parts() const noexcept
{
    const std::uint64_t magnitude = Magnitude(m_count);
    const std::uint64_t seconds = magnitude / 1000000000;
    return {m_count < 0, static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
            static_cast<int>(seconds % 60), static_cast<int>(magnitude % 1000000000)};
}

VoString VoTimeDuration::toComponentsString() const
{
    return VoString(vo::detail::ComponentsText(parts()));
}

VoString VoTimeDuration::toIsoString() const
{
    return VoString(vo::detail::IsoText(parts()));
}

VoTimeDuration VoTimeDuration::Parse(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    if (const auto duration = vo::detail::ReadDuration(bytes))
        return *duration;
    throw VoInvalidConversionException(text, "VoTimeDuration");
}

VoTimeDuration& VoTimeDuration::multiply(std::int64_t factor)
{
    // Their product as magnitudes: that of the smallest number has no positive counterpart.
    const std::uint64_t a = Magnitude(m_count);
    const std::uint64_t b = Magnitude(factor);
    const bool isNegative = (m_count < 0) != (factor < 0);
    const std::uint64_t limit = Magnitude(isNegative ? Min().m_count : Max().m_count);
    if (b != 0 && a > limit / b)
        failOverflow();
    const std::uint64_t product = a * b;
    m_count = static_cast<std::int64_t>(isNegative ? 0 - product : product);
    return *this;
}

VoTimeDuration& VoTimeDuration::divide(std::int64_t divisor)
{
    if (divisor == 0)
        failDivision();
    if (divisor == -1)
        return *this = -*this;
    m_count /= divisor;
    return *this;
}

VoTimeDuration& VoTimeDuration::scale(double factor)
{
    constexpr double limit = 9223372036854775808.0; // 2^63, the first that no longer fits
    const double scaled = std::round(static_cast<double>(m_count) * factor);
    if (!(scaled >= -limit && scaled < limit))
        failOverflow();
    m_count = static_cast<std::int64_t>(scaled);
    return *this;
}

VoString VoTimeDuration::Serialize(VoTimeDuration duration)
{
    return VoString(static_cast<long long>(duration.m_count));
}

VoTimeDuration VoTimeDuration::Deserialize(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), count);
    if (error != std::errc() || end != bytes.data() + bytes.size())
        throw VoInvalidConversionException(text, "VoTimeDuration");
    return VoNanoseconds(count);
}

void VoTimeDuration::failComponent(const char* unit)
{
    throw VoOverflowException(VoString("Number of ") + unit + " is greater than the value a time duration can hold");
}

void VoTimeDuration::failOverflow()
{
    throw VoOverflowException();
}

void VoTimeDuration::failDivision()
{
    throw VoDivideByZeroException();
}

std::ostream& operator<<(std::ostream& stream, VoTimeDuration duration)
{
    return stream << duration.toString();
}
