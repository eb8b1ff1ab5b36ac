#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// @file
/// The Gregorian calendar, counted in days, and the texts of its numbers.

namespace vo::detail {

/// A day of the Gregorian calendar.
struct CalendarDate
{
    std::int64_t year;
    std::int64_t month; ///< 1 to 12.
    std::int64_t day;   ///< From 1.
};

inline constexpr std::int64_t SecondsPerDay = 86400; ///< There are no leap seconds.

/// Rounded down also for what is negative.
std::int64_t FloorDivide(std::int64_t dividend, std::int64_t divisor);

/// The date of a day counted from 1970-01-01.
CalendarDate DateOf(std::int64_t day);

/// The number of a day counted from 1970-01-01. The month is 1 to 12; days beyond its end count on.
std::int64_t DayOf(const CalendarDate& date);

/// Whether the calendar has that day.
bool IsDate(const CalendarDate& date);

/// Whether a clock shows that time.
bool IsTime(int hour, int minute, int second, int nanosecond);

/// 1 for Monday to 7 for Sunday, of a day counted from 1970-01-01.
int WeekdayOf(std::int64_t day);

/// 28 to 31; the month is 1 to 12.
int DaysInMonth(std::int64_t year, std::int64_t month);

/// Decimal digits, with leading zeros up to a width.
std::string Padded(std::int64_t number, std::size_t width);

} // namespace vo::detail
