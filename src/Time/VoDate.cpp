#include <Time/VoDate.h>

#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Time/detail/CalendarDate.h>
#include <Time/detail/DatePattern.h>

#include <QtCore/QDate>

#include <ostream>
#include <string>

using namespace vo::detail;

namespace {

constexpr int LastYear = 9999;
constexpr const char* IsoPattern = "%Y-%m-%d";

[[noreturn]] void Refuse()
{
    throw VoInvalidParameterException("Invalid date or time");
}

CalendarDate Parts(VoDate date)
{
    return DateOf(date.days());
}

DateFields Fields(VoDate date)
{
    const CalendarDate parts = Parts(date);
    DateFields fields;
    fields.year = static_cast<int>(parts.year);
    fields.month = static_cast<int>(parts.month);
    fields.day = static_cast<int>(parts.day);
    return fields;
}

bool IsYear(std::int64_t year)
{
    return year >= 1 && year <= LastYear;
}

} // namespace

VoDate::VoDate(int year, int month, int day)
{
    if (!IsDate(year, month, day))
        Refuse();
    m_days = static_cast<std::int32_t>(DayOf({year, month, day}));
}

VoDate VoDate::FromDays(std::int64_t days)
{
    static const std::int64_t first = DayOf({1, 1, 1});
    static const std::int64_t last = DayOf({LastYear, 12, 31});
    if (days < first || days > last)
        throw VoOverflowException();
    VoDate date;
    date.m_days = static_cast<std::int32_t>(days);
    return date;
}

int VoDate::year() const
{
    return static_cast<int>(Parts(*this).year);
}

int VoDate::month() const
{
    return static_cast<int>(Parts(*this).month);
}

int VoDate::day() const
{
    return static_cast<int>(Parts(*this).day);
}

VoDate::Weekday VoDate::weekday() const
{
    return static_cast<Weekday>(WeekdayOf(m_days));
}

int VoDate::dayOfYear() const
{
    return static_cast<int>(m_days - DayOf({year(), 1, 1})) + 1;
}

VoDate::Week VoDate::week() const
{
    const std::int64_t thursday = m_days - weekday() + Thursday;
    const std::int64_t year = DateOf(thursday).year;
    return {static_cast<int>(year), static_cast<int>((thursday - DayOf({year, 1, 1})) / 7) + 1};
}

bool VoDate::IsLeapYear(int year)
{
    return vo::detail::DaysInMonth(year, 2) == 29;
}

int VoDate::DaysInMonth(int year, int month)
{
    if (!IsDate(year, month, 1))
        Refuse();
    return vo::detail::DaysInMonth(year, month);
}

bool VoDate::IsDate(int year, int month, int day)
{
    return IsYear(year) && vo::detail::IsDate({year, month, day});
}

VoDate VoDate::addDays(std::int64_t days) const
{
    constexpr std::int64_t beyond = 4000000; // more days than the calendar has, and few enough to add
    return FromDays(m_days + (days > beyond ? beyond : days < -beyond ? -beyond : days));
}

VoDate VoDate::addMonths(std::int64_t months, VoShortMonth rule) const
{
    constexpr std::int64_t beyond = 12 * (LastYear + 1);
    const CalendarDate parts = Parts(*this);
    const std::int64_t shift = months > beyond ? beyond : months < -beyond ? -beyond : months;
    const std::int64_t month = parts.year * 12 + parts.month - 1 + shift;
    const std::int64_t year = FloorDivide(month, 12);
    if (!IsYear(year))
        throw VoOverflowException();
    const CalendarDate first{year, month - year * 12 + 1, 1};
    const int length = vo::detail::DaysInMonth(first.year, first.month);
    if (parts.day <= length || rule == VoShortMonth::NextMonth)
        return FromDays(DayOf(first) + parts.day - 1);
    if (rule == VoShortMonth::Refuse)
        Refuse();
    return FromDays(DayOf(first) + length - 1);
}

VoDate VoDate::addYears(std::int64_t years, VoShortMonth rule) const
{
    constexpr std::int64_t beyond = LastYear + 1;
    return addMonths(12 * (years > beyond ? beyond : years < -beyond ? -beyond : years), rule);
}

VoString VoDate::toString() const
{
    return toString(IsoPattern);
}

VoString VoDate::toString(const VoString& pattern) const
{
    return VoString(FormatDate(pattern.toStdString(), DateParts::Date, Fields(*this)));
}

VoDate VoDate::Parse(const VoString& text, const VoString& pattern)
{
    DateFields fields;
    if (!ParseDate(pattern.toStdString(), DateParts::Date, text.toStdString(), fields) ||
        !IsDate(fields.year, fields.month, fields.day))
        throw VoInvalidConversionException(text, "VoDate");
    return VoDate(fields.year, fields.month, fields.day);
}

VoString VoDate::Serialize(VoDate date)
{
    return date.toString();
}

VoDate VoDate::Deserialize(const VoString& text)
{
    return Parse(text, IsoPattern);
}

VoDate VoDate::FromQDate(const QDate& date)
{
    return VoDate(date.year(), date.month(), date.day());
}

QDate VoDate::toQDate() const
{
    const CalendarDate parts = Parts(*this);
    return QDate(static_cast<int>(parts.year), static_cast<int>(parts.month), static_cast<int>(parts.day));
}

std::ostream& operator<<(std::ostream& stream, VoDate date)
{
    return stream << date.toString();
}
