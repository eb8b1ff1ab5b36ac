#pragma once

#include <Time/VoTimeDuration.h>

/// An instant, held as the time since 1970-01-01T00:00:00Z by the system's clock, leap seconds not counted.
///
/// The system's clock may be set, so the difference of two readings may be wrong or negative.
class VOCORE_EXPORT VoTimePoint
{
public:
    constexpr VoTimePoint() noexcept = default; ///< The beginning of 1970.

    /// The instant `timeSinceEpoch` after the beginning of 1970.
    constexpr explicit VoTimePoint(VoTimeDuration timeSinceEpoch) noexcept
        : m_sinceEpoch(timeSinceEpoch)
    {
    }

    /// An instant of the standard library's kind.
    constexpr explicit VoTimePoint(
        std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds> instant) noexcept
        : m_sinceEpoch(instant.time_since_epoch())
    {
    }
    /// As the standard library's kind.
    constexpr std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds> toChrono() const noexcept
    {
        return std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>(m_sinceEpoch.toChrono());
    }

    static VoTimePoint Now() noexcept; ///< The system clock's time.

    /// The time since the beginning of 1970.
    constexpr VoTimeDuration timeSinceEpoch() const noexcept { return m_sinceEpoch; }

    /// @throws VoOverflowException when the result does not fit; the time point is unchanged then
    /// @{
    constexpr VoTimePoint& operator+=(VoTimeDuration duration)
    {
        m_sinceEpoch += duration;
        return *this;
    }

    constexpr VoTimePoint& operator-=(VoTimeDuration duration)
    {
        m_sinceEpoch -= duration;
        return *this;
    }

    friend constexpr VoTimePoint operator+(VoTimePoint point, VoTimeDuration duration) { return point += duration; }
    friend constexpr VoTimePoint operator+(VoTimeDuration duration, VoTimePoint point) { return point += duration; }
    friend constexpr VoTimePoint operator-(VoTimePoint point, VoTimeDuration duration) { return point -= duration; }
    friend constexpr VoTimeDuration operator-(VoTimePoint a, VoTimePoint b) { return a.m_sinceEpoch - b.m_sinceEpoch; }
    /// @}

    /// Comparison of the nanoseconds.
    /// @{
    friend constexpr bool operator==(VoTimePoint a, VoTimePoint b) noexcept { return a.m_sinceEpoch == b.m_sinceEpoch; }
    friend constexpr bool operator!=(VoTimePoint a, VoTimePoint b) noexcept { return a.m_sinceEpoch != b.m_sinceEpoch; }
    friend constexpr bool operator<(VoTimePoint a, VoTimePoint b) noexcept { return a.m_sinceEpoch < b.m_sinceEpoch; }
    friend constexpr bool operator<=(VoTimePoint a, VoTimePoint b) noexcept { return a.m_sinceEpoch <= b.m_sinceEpoch; }
    friend constexpr bool operator>(VoTimePoint a, VoTimePoint b) noexcept { return a.m_sinceEpoch > b.m_sinceEpoch; }
    friend constexpr bool operator>=(VoTimePoint a, VoTimePoint b) noexcept { return a.m_sinceEpoch >= b.m_sinceEpoch; }
    /// @}

    /// The instant in universal time with milliseconds: "2024-02-29T12:30:00.250Z".
    VoString toString() const;

    /// timeSinceEpoch() as VoTimeDuration writes it.
    static VoString Serialize(VoTimePoint point);

    /// Reverses Serialize().
    /// @throws VoInvalidConversionException (text, "VoTimePoint") for any other text
    static VoTimePoint Deserialize(const VoString& text);

private:
    VoTimeDuration m_sinceEpoch;
};

/// @relates VoTimePoint
/// Writes toString().
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, VoTimePoint point);

/// @cond INTERNAL
template <>
struct std::hash<VoTimePoint>
{
    std::size_t operator()(VoTimePoint point) const noexcept
    {
        return std::hash<VoTimeDuration>()(point.timeSinceEpoch());
    }
};
/// @endcond
