#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <limits>
#include <type_traits>

/// @name Time components
/// Counts of one unit, from which durations are made: `VoTimeDuration wait = VoSeconds(5);`
/// @{
/// A count of nanoseconds.
struct VoNanoseconds
{
    /// So many.
    constexpr explicit VoNanoseconds(std::int64_t count) noexcept
        : value(count)
    {
    }
    std::int64_t value; ///< The count.
};

/// A count of microseconds.
struct VoMicroseconds
{
    /// So many.
    constexpr explicit VoMicroseconds(std::int64_t count) noexcept
        : value(count)
    {
    }
    std::int64_t value; ///< The count.
};

/// A count of milliseconds.
struct VoMilliseconds
{
    /// So many.
    constexpr explicit VoMilliseconds(std::int64_t count) noexcept
        : value(count)
    {
    }
    std::int64_t value; ///< The count.
};

/// A count of seconds.
struct VoSeconds
{
    /// So many.
    constexpr explicit VoSeconds(std::int64_t count) noexcept
        : value(count)
    {
    }
    std::int64_t value; ///< The count.
};

/// A count of minutes.
struct VoMinutes
{
    /// So many.
    constexpr explicit VoMinutes(std::int32_t count) noexcept
        : value(count)
    {
    }
    std::int32_t value; ///< The count.
};

/// A count of hours.
struct VoHours
{
    /// So many.
    constexpr explicit VoHours(std::int32_t count) noexcept
        : value(count)
    {
    }
    std::int32_t value; ///< The count.
};
/// @}

/// A signed span of time, held in nanoseconds: about 292 years either way.
///
/// A component that does not fit throws VoOverflowException, "Number of hours is greater than the value a time duration
/// can hold" or the same with its own unit; sums and differences that do not fit throw VoOverflowException with its own
/// text.
class VOCORE_EXPORT VoTimeDuration
{
public:
    constexpr VoTimeDuration() noexcept = default; ///< No time.

    /// The span of one component. @{
    constexpr VoTimeDuration(VoNanoseconds nanoseconds) noexcept
        : m_count(nanoseconds.value)
    {
    }
    constexpr VoTimeDuration(VoMicroseconds microseconds)
        : m_count(scaled(microseconds.value, 1000, "microseconds"))
    {
    }
    constexpr VoTimeDuration(VoMilliseconds milliseconds)
        : m_count(scaled(milliseconds.value, 1000000, "milliseconds"))
    {
    }
    constexpr VoTimeDuration(VoSeconds seconds)
        : m_count(scaled(seconds.value, 1000000000, "seconds"))
    {
    }
    constexpr VoTimeDuration(VoMinutes minutes)
        : m_count(scaled(minutes.value, 60000000000, "minutes"))
    {
    }
    constexpr VoTimeDuration(VoHours hours)
        : m_count(scaled(hours.value, 3600000000000, "hours"))
    {
    }
    /// @}

    /// The same span of the standard library's kind.
    constexpr explicit VoTimeDuration(std::chrono::nanoseconds span) noexcept
        : m_count(span.count())
    {
    }

    /// The span of `seconds`, rounded to nanoseconds; what is too large is the largest span, not a number is none.
    static VoTimeDuration FromSeconds(double seconds) noexcept;

    /// The longest span.
    static constexpr VoTimeDuration Max() noexcept
    {
        return VoTimeDuration(VoNanoseconds(std::numeric_limits<std::int64_t>::max()));
    }

    /// The longest span backwards.
    static constexpr VoTimeDuration Min() noexcept
    {
        return VoTimeDuration(VoNanoseconds(std::numeric_limits<std::int64_t>::min()));
    }

    /// The number of nanoseconds.
    constexpr std::int64_t count() const noexcept { return m_count; }

    /// The number of seconds, fractions included.
    constexpr double seconds() const noexcept { return static_cast<double>(m_count) / 1e9; }

    /// As the standard library's kind.
    constexpr std::chrono::nanoseconds toChrono() const noexcept { return std::chrono::nanoseconds(m_count); }

    /// @throws VoOverflowException when the result does not fit; the duration is unchanged then
    /// @{
    constexpr VoTimeDuration& operator+=(VoTimeDuration other)
    {
        if (other.m_count > 0 ? m_count > Max().m_count - other.m_count : m_count < Min().m_count - other.m_count)
            failOverflow();
        m_count += other.m_count;
        return *this;
    }

    constexpr VoTimeDuration& operator-=(VoTimeDuration other)
    {
        if (other.m_count < 0 ? m_count > Max().m_count + other.m_count : m_count < Min().m_count + other.m_count)
            failOverflow();
        m_count -= other.m_count;
        return *this;
    }

    constexpr VoTimeDuration operator-() const { return VoTimeDuration() -= *this; }
    friend constexpr VoTimeDuration operator+(VoTimeDuration a, VoTimeDuration b) { return a += b; }
    friend constexpr VoTimeDuration operator-(VoTimeDuration a, VoTimeDuration b) { return a -= b; }
    /// @}

    /// So many times as long, or as short, rounded towards zero for a whole number and to the nearest nanosecond for
    /// any other.
    /// @throws VoOverflowException when the result does not fit or is no number
    /// @throws VoDivideByZeroException for a division by zero; the duration is unchanged then
    /// @{
    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    VoTimeDuration& operator*=(Number factor)
    {
        if constexpr (std::is_integral_v<Number>)
            return multiply(static_cast<std::int64_t>(factor));
        else
            return scale(static_cast<double>(factor));
    }

    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    VoTimeDuration& operator/=(Number divisor)
    {
        if constexpr (std::is_integral_v<Number>)
            return divide(static_cast<std::int64_t>(divisor));
        else if (divisor == 0)
            failDivision();
        else
            return scale(1 / static_cast<double>(divisor));
    }

    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    friend VoTimeDuration operator*(VoTimeDuration duration, Number factor)
    {
        return duration *= factor;
    }

    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    friend VoTimeDuration operator*(Number factor, VoTimeDuration duration)
    {
        return duration *= factor;
    }

    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    friend VoTimeDuration operator/(VoTimeDuration duration, Number divisor)
    {
        return duration /= divisor;
    }
    /// @}

    /// How many times `b` goes into `a`.
    /// @throws VoDivideByZeroException
    friend double operator/(VoTimeDuration a, VoTimeDuration b)
    {
        if (b.m_count == 0)
            failDivision();
        return static_cast<double>(a.m_count) / static_cast<double>(b.m_count);
    }

    /// The duration without its sign.
    /// @throws VoOverflowException for Min()
    constexpr VoTimeDuration magnitude() const { return m_count < 0 ? -*this : *this; }

    /// A duration taken apart.
    struct Parts
    {
        bool isNegative; ///< The sign of the whole.
        int hours;       ///< 0 to 2,562,047.
        int minutes;     ///< 0 to 59.
        int seconds;     ///< 0 to 59.
        int nanoseconds; ///< 0 to 999,999,999.
    };
    Parts parts() const noexcept; ///< The duration taken apart.

    /// Comparison of the nanoseconds.
    /// @{
    friend constexpr bool operator==(VoTimeDuration a, VoTimeDuration b) noexcept { return a.m_count == b.m_count; }
    friend constexpr bool operator!=(VoTimeDuration a, VoTimeDuration b) noexcept { return a.m_count != b.m_count; }
    friend constexpr bool operator<(VoTimeDuration a, VoTimeDuration b) noexcept { return a.m_count < b.m_count; }
    friend constexpr bool operator<=(VoTimeDuration a, VoTimeDuration b) noexcept { return a.m_count <= b.m_count; }
    friend constexpr bool operator>(VoTimeDuration a, VoTimeDuration b) noexcept { return a.m_count > b.m_count; }
    friend constexpr bool operator>=(VoTimeDuration a, VoTimeDuration b) noexcept { return a.m_count >= b.m_count; }
    /// @}

    /// For people: the span in the largest unit of which it holds one, with up to three decimals: "1.5 s", "2 h".
    VoString toString() const;

    /// The whole duration: "1h 03m 12.5s", "3m 00s", "-12.5s", "0s".
    VoString toComponentsString() const;

    /// As ISO 8601 has it: "PT1H3M12.5S", "-PT12.5S", "PT0S".
    VoString toIsoString() const;

    /// Reads what toString(), toComponentsString() and toIsoString() write and their like: a sign, then numbers with
    /// the units d, h, m or min, s, ms, us and ns in falling order, with or without blanks, the last with a fraction if
    /// need be ("1h 30m", "2.5 h", "90s"); or an ISO 8601 duration of weeks, days, hours, minutes and seconds. Rounded
    /// to nanoseconds. The case of ISO letters counts, that of units does not.
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoTimeDuration", also for years
    /// and
    ///     months, which have no fixed length, and for what does not fit
    static VoTimeDuration Parse(const VoString& text);

    /// The nanoseconds in decimal.
    static VoString Serialize(VoTimeDuration duration);

    /// Reverses Serialize().
    /// @throws VoInvalidConversionException (text, "VoTimeDuration") for any other text
    static VoTimeDuration Deserialize(const VoString& text);

private:
    static constexpr std::int64_t scaled(std::int64_t value, std::int64_t scale, const char* unit)
    {
        if (value > Max().m_count / scale || value < Min().m_count / scale)
            failComponent(unit);
        return value * scale;
    }

    [[noreturn]] static void failComponent(const char* unit);
    [[noreturn]] static void failOverflow();
    [[noreturn]] static void failDivision();

    VoTimeDuration& multiply(std::int64_t factor);
    VoTimeDuration& divide(std::int64_t divisor);
    VoTimeDuration& scale(double factor);

    std::int64_t m_count = 0;
};

/// @cond INTERNAL
namespace vo::detail {

template <typename T>
constexpr bool IsTimeComponent =
    std::is_same_v<T, VoNanoseconds> || std::is_same_v<T, VoMicroseconds> || std::is_same_v<T, VoMilliseconds> ||
    std::is_same_v<T, VoSeconds> || std::is_same_v<T, VoMinutes> || std::is_same_v<T, VoHours>;

} // namespace vo::detail
/// @endcond

/// @{ Sums of time components: `VoTimeDuration lap = VoMinutes(1) + VoSeconds(12);`
/// @throws VoOverflowException as durations do
template <typename A, typename B,
          typename = std::enable_if_t<vo::detail::IsTimeComponent<A> && vo::detail::IsTimeComponent<B>>>
constexpr VoTimeDuration operator+(A a, B b)
{
    return VoTimeDuration(a) + VoTimeDuration(b);
}
template <typename A, typename B,
          typename = std::enable_if_t<vo::detail::IsTimeComponent<A> && vo::detail::IsTimeComponent<B>>>
constexpr VoTimeDuration operator-(A a, B b)
{
    return VoTimeDuration(a) - VoTimeDuration(b);
}
/// @}

/// @relates VoTimeDuration
/// Writes toString().
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, VoTimeDuration duration);

/// @cond INTERNAL
template <>
struct std::hash<VoTimeDuration>
{
    std::size_t operator()(VoTimeDuration duration) const noexcept
    {
        return std::hash<std::int64_t>()(duration.count());
    }
};
/// @endcond
