#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>

class QDate;

/// What becomes of the 31st when months or years are added and the month has no such day.
enum class VoShortMonth
{
    LastDay,   ///< The last day of that month: a month after 31 January is 28 or 29 February.
    NextMonth, ///< The days beyond the end count on: a month after 31 January is 2 or 3 March.
    Refuse     ///< VoInvalidParameterException "Invalid date or time".
};

/// A day of the Gregorian calendar, of the years 1 to 9999, without a time or a place. A value.
///
/// Texts are ISO 8601: "2024-05-01". Patterns have the letters of the C library's strftime, in English: %Y year, %y
/// year without its century, %m month, %d day, %e day without zero, %j day of the year, %b %B month's name, %a %A
/// weekday's name, %u weekday (1 is Monday), %G %V year and week of ISO 8601, %F for %Y-%m-%d, %% for %. %y, %G and %V
/// are shown but not read back; a weekday that is read must agree with the date.
///
/// What leaves the calendar's years throws VoOverflowException "Overflow - result too large".
class VOCORE_EXPORT VoDate
{
public:
    /// Days of the week, numbered as in ISO 8601.
    enum Weekday : std::int32_t
    {
        Monday = 1,    ///< The first.
        Tuesday = 2,   ///< The second.
        Wednesday = 3, ///< The third.
        Thursday = 4,  ///< The fourth.
        Friday = 5,    ///< The fifth.
        Saturday = 6,  ///< The sixth.
        Sunday = 7     ///< The last.
    };

    /// A week of ISO 8601: weeks begin on Mondays and belong to the year of their Thursday.
    struct Week
    {
        int year;   ///< The year that the week belongs to.
        int number; ///< 1 to 53.
    };

    constexpr VoDate() noexcept = default; ///< 1970-01-01.
    /// A day. @throws VoInvalidParameterException "Invalid date or time" for one that the calendar has not
    VoDate(int year, int month, int day);
    /// So many days after 1970-01-01.
    static VoDate FromDays(std::int64_t days);

    int year() const;                                               ///< 1 to 9999.
    int month() const;                                              ///< 1 to 12.
    int day() const;                                                ///< 1 to 31.
    Weekday weekday() const;                                        ///< The day of the week.
    int dayOfYear() const;                                          ///< 1 to 366.
    Week week() const;                                              ///< The week of ISO 8601.
    constexpr std::int64_t days() const noexcept { return m_days; } ///< Days since 1970-01-01.

    static bool IsLeapYear(int year);            ///< Whether a year has 366 days.
    static int DaysInMonth(int year, int month); ///< 28 to 31. @throws VoInvalidParameterException as the constructor
    static bool IsDate(int year, int month, int day); ///< Whether the calendar has that day.

    VoDate addDays(std::int64_t days) const; ///< The day so many days later, or earlier.
    /// The same day so many months later, or earlier.
    VoDate addMonths(std::int64_t months, VoShortMonth rule = VoShortMonth::LastDay) const;
    /// The same day so many years later, or earlier.
    VoDate addYears(std::int64_t years, VoShortMonth rule = VoShortMonth::LastDay) const;
    /// Days from this date to another; negative when that is earlier.
    constexpr std::int64_t daysTo(VoDate other) const noexcept { return other.m_days - m_days; }

    VoString toString() const; ///< "2024-05-01"
    VoString
    toString(const VoString& pattern) const; ///< @throws VoInvalidParameterException "Invalid pattern: " + pattern
    /// Reads a text by a pattern; what the pattern does not name is that of 1970-01-01.
    /// @throws VoInvalidParameterException "Invalid pattern: " + pattern
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoDate"
    static VoDate Parse(const VoString& text, const VoString& pattern);
    static VoString Serialize(VoDate date); ///< As toString().
    /// Reverses Serialize(). @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoDate"
    static VoDate Deserialize(const VoString& text);

    static VoDate FromQDate(const QDate& date); ///< @throws VoInvalidParameterException as the constructor
    QDate toQDate() const;                      ///< As the framework's kind.

    /// Comparison of the days.
    /// @{
    friend constexpr bool operator==(VoDate a, VoDate b) noexcept { return a.m_days == b.m_days; }
    friend constexpr bool operator!=(VoDate a, VoDate b) noexcept { return a.m_days != b.m_days; }
    friend constexpr bool operator<(VoDate a, VoDate b) noexcept { return a.m_days < b.m_days; }
    friend constexpr bool operator<=(VoDate a, VoDate b) noexcept { return a.m_days <= b.m_days; }
    friend constexpr bool operator>(VoDate a, VoDate b) noexcept { return a.m_days > b.m_days; }
    friend constexpr bool operator>=(VoDate a, VoDate b) noexcept { return a.m_days >= b.m_days; }
    /// @}

    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, VoDate date);

private:
    std::int32_t m_days = 0;
};

/// @cond INTERNAL
template <>
struct std::hash<VoDate>
{
    std::size_t operator()(VoDate date) const noexcept { return std::hash<std::int64_t>()(date.days()); }
};
/// @endcond
