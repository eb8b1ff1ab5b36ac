#pragma once

#include <Time/VoTimeDuration.h>

class QTime;

/// A time as a clock shows it, without a day or a place: 00:00 to the last nanosecond before midnight. A value.
///
/// Texts are ISO 8601: "12:34:56", with as many groups of three fraction digits as it takes. Patterns have the letters
/// of the C library's strftime: %H hour, %I hour of twelve, %p AM or PM, %M minute, %S second, %f nanoseconds with nine
/// digits (%3f with three, and so on, the others cut), %T for %H:%M:%S, %% for %.
class VOCORE_EXPORT VoTimeOfDay
{
public:
    constexpr VoTimeOfDay() noexcept = default; ///< Midnight.
    /// @throws VoInvalidParameterException "Invalid date or time" for parts that no clock shows
    explicit VoTimeOfDay(int hour, int minute = 0, int second = 0, int nanosecond = 0);
    /// So long after midnight; whole days are left out: 25 hours are 01:00, minus one hour is 23:00.
    static VoTimeOfDay FromMidnight(VoTimeDuration duration) noexcept;

    constexpr int hour() const noexcept { return static_cast<int>(m_count / 3600000000000); }      ///< 0 to 23.
    constexpr int minute() const noexcept { return static_cast<int>(m_count / 60000000000 % 60); } ///< 0 to 59.
    constexpr int second() const noexcept { return static_cast<int>(m_count / 1000000000 % 60); }  ///< 0 to 59.
    constexpr int nanosecond() const noexcept { return static_cast<int>(m_count % 1000000000); }   ///< From 0.
    constexpr VoTimeDuration sinceMidnight() const noexcept { return VoNanoseconds(m_count); }     ///< As a duration.

    /// Later by a duration, round the clock. @{
    VoTimeOfDay& operator+=(VoTimeDuration duration) noexcept;
    VoTimeOfDay& operator-=(VoTimeDuration duration) noexcept;
    friend VoTimeOfDay operator+(VoTimeOfDay time, VoTimeDuration duration) noexcept { return time += duration; }
    friend VoTimeOfDay operator-(VoTimeOfDay time, VoTimeDuration duration) noexcept { return time -= duration; }
    /// @}
    /// The time between, on one day; negative when `a` is the earlier.
    friend constexpr VoTimeDuration operator-(VoTimeOfDay a, VoTimeOfDay b) noexcept
    {
        return VoNanoseconds(a.m_count - b.m_count);
    }

    VoString toString() const; ///< "12:34:56", "12:34:56.500"
    VoString
    toString(const VoString& pattern) const; ///< @throws VoInvalidParameterException "Invalid pattern: " + pattern
    /// Reads a text by a pattern; what the pattern does not name is 0.
    /// @throws VoInvalidParameterException "Invalid pattern: " + pattern
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoTimeOfDay"
    static VoTimeOfDay Parse(const VoString& text, const VoString& pattern);
    static VoString Serialize(VoTimeOfDay time); ///< As toString().
    /// Reverses Serialize(); one to nine fraction digits may be given.
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoTimeOfDay"
    static VoTimeOfDay Deserialize(const VoString& text);

    static VoTimeOfDay FromQTime(const QTime& time); ///< @throws VoInvalidParameterException as the constructor
    QTime toQTime() const;                           ///< As the framework's kind, cut to milliseconds.

    /// Comparison, earlier is less.
    /// @{
    friend constexpr bool operator==(VoTimeOfDay a, VoTimeOfDay b) noexcept { return a.m_count == b.m_count; }
    friend constexpr bool operator!=(VoTimeOfDay a, VoTimeOfDay b) noexcept { return a.m_count != b.m_count; }
    friend constexpr bool operator<(VoTimeOfDay a, VoTimeOfDay b) noexcept { return a.m_count < b.m_count; }
    friend constexpr bool operator<=(VoTimeOfDay a, VoTimeOfDay b) noexcept { return a.m_count <= b.m_count; }
    friend constexpr bool operator>(VoTimeOfDay a, VoTimeOfDay b) noexcept { return a.m_count > b.m_count; }
    friend constexpr bool operator>=(VoTimeOfDay a, VoTimeOfDay b) noexcept { return a.m_count >= b.m_count; }
    /// @}

    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, VoTimeOfDay time);

private:
    std::int64_t m_count = 0; // nanoseconds since midnight
};

/// @cond INTERNAL
template <>
struct std::hash<VoTimeOfDay>
{
    std::size_t operator()(VoTimeOfDay time) const noexcept
    {
        return std::hash<std::int64_t>()(time.sinceMidnight().count());
    }
};
/// @endcond
