#include <Time/VoTimeOfDay.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Time/detail/CalendarDate.h>
#include <Time/detail/DatePattern.h>
#include <Time/detail/TextScanner.h>

#include <QtCore/QTime>

#include <ostream>
#include <string>

using namespace vo::detail;

namespace {

constexpr std::int64_t NanosecondsPerDay = 86400000000000;

} // namespace

VoTimeOfDay::VoTimeOfDay(int hour, int minute, int second, int nanosecond)
{
    if (!IsTime(hour, minute, second, nanosecond))
        throw VoInvalidParameterException("Invalid date or time");
    m_count = ((hour * std::int64_t{60} + minute) * 60 + second) * 1000000000 + nanosecond;
}

VoTimeOfDay VoTimeOfDay::FromMidnight(VoTimeDuration duration) noexcept
{
    VoTimeOfDay time;
    time.m_count = duration.count() % NanosecondsPerDay;
    if (time.m_count < 0)
        time.m_count += NanosecondsPerDay;
    return time;
}

VoTimeOfDay& VoTimeOfDay::operator+=(VoTimeDuration duration) noexcept
{
    return *this = FromMidnight(VoNanoseconds(m_count + duration.count() % NanosecondsPerDay));
}

VoTimeOfDay& VoTimeOfDay::operator-=(VoTimeDuration duration) noexcept
{
    return *this = FromMidnight(VoNanoseconds(m_count - duration.count() % NanosecondsPerDay));
}

VoString VoTimeOfDay::toString() const
{
    const int fraction = nanosecond();
    return toString(fraction == 0             ? "%T"
                    : fraction % 1000000 == 0 ? "%T.%3f"
                    : fraction % 1000 == 0    ? "%T.%6f"
                                              : "%T.%9f");
}

VoString VoTimeOfDay::toString(const VoString& pattern) const
{
    DateFields fields;
    fields.hour = hour();
    fields.minute = minute();
    fields.second = second();
    fields.nanosecond = nanosecond();
    return VoString(FormatDate(pattern.toStdString(), DateParts::Time, fields));
}

VoTimeOfDay VoTimeOfDay::Parse(const VoString& text, const VoString& pattern)
{
    DateFields fields;
    if (!ParseDate(pattern.toStdString(), DateParts::Time, text.toStdString(), fields))
        throw VoInvalidConversionException(text, "VoTimeOfDay");
    return VoTimeOfDay(fields.hour, fields.minute, fields.second, fields.nanosecond);
}

VoString VoTimeOfDay::Serialize(VoTimeOfDay time)
{
    return time.toString();
}

VoTimeOfDay VoTimeOfDay::Deserialize(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    TextScanner scanner(bytes);
    const int hour = scanner.number(2);
    scanner.expect(':');
    const int minute = scanner.number(2);
    scanner.expect(':');
    const int second = scanner.number(2);
    const int nanosecond = scanner.accept('.') ? scanner.fraction() : 0;
    if (!scanner.isComplete() || !IsTime(hour, minute, second, nanosecond))
        throw VoInvalidConversionException(text, "VoTimeOfDay");
    return VoTimeOfDay(hour, minute, second, nanosecond);
}

VoTimeOfDay VoTimeOfDay::FromQTime(const QTime& time)
{
    return VoTimeOfDay(time.hour(), time.minute(), time.second(), time.msec() * 1000000);
}

QTime VoTimeOfDay::toQTime() const
{
    return QTime(hour(), minute(), second(), nanosecond() / 1000000);
}

std::ostream& operator<<(std::ostream& stream, VoTimeOfDay time)
{
    return stream << time.toString();
}
