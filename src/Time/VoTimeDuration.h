#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <limits>

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

    /// The span of @p seconds, rounded to nanoseconds; what is too large is the largest span, not a number is none.
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

    /// Throws VoOverflowException when the result does not fit; the duration is unchanged then. @{
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

    /// The nanoseconds in decimal.
    static VoString Serialize(VoTimeDuration duration);

    /// Reverses Serialize(); throws VoInvalidConversionException(text, "VoTimeDuration") for any other text.
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

    std::int64_t m_count = 0;
};

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
