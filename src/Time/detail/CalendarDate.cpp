#include <Time/detail/CalendarDate.h>

namespace vo::detail {
namespace {

constexpr std::int64_t DaysPerEra = 146097;
// From 0000-03-01 to 1970-01-01.
constexpr std::int64_t DaysBefore1970 = 719468;

} // namespace

std::int64_t FloorDivide(std::int64_t dividend, std::int64_t divisor)
{
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

// Counts in eras of 400 years that begin on a first of March, so that the leap day is the last of its year.
CalendarDate DateOf(std::int64_t day)
{
    const std::int64_t sinceMarch0000 = day + DaysBefore1970;
    const std::int64_t era = FloorDivide(sinceMarch0000, DaysPerEra);
    const std::int64_t dayOfEra = sinceMarch0000 - era * DaysPerEra;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month, dayOfYear - (153 * monthFromMarch + 2) / 5 + 1};
}

std::int64_t DayOf(const CalendarDate& date)
{
    const std::int64_t year = date.month <= 2 ? date.year - 1 : date.year;
    const std::int64_t era = FloorDivide(year, 400);
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t monthFromMarch = date.month > 2 ? date.month - 3 : date.month + 9;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
    return era * DaysPerEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - DaysBefore1970;
}

bool IsDate(const CalendarDate& date)
{
    if (date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31)
        return false;
    const CalendarDate counted = DateOf(DayOf(date));
    return counted.month == date.month && counted.day == date.day;
}

bool IsTime(int hour, int minute, int second, int nanosecond)
{
    const auto within = [](int value, int limit) { return value >= 0 && value < limit; };
    return within(hour, 24) && within(minute, 60) && within(second, 60) && within(nanosecond, 1000000000);
}

int WeekdayOf(std::int64_t day)
{
    // 1970-01-01 was a Thursday.
    const std::int64_t sinceMonday = day + 3;
    return static_cast<int>(sinceMonday - FloorDivide(sinceMonday, 7) * 7) + 1;
}

int DaysInMonth(std::int64_t year, std::int64_t month)
{
    const std::int64_t next = month == 12 ? DayOf({year + 1, 1, 1}) : DayOf({year, month + 1, 1});
    return static_cast<int>(next - DayOf({year, month, 1}));
}

std::string Padded(std::int64_t number, std::size_t width)
{
    std::string digits = std::to_string(number);
    return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

} // namespace vo::detail
