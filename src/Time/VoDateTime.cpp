#include <Time/VoDateTime.h>

#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Time/CalendarDate.h>

#include <QtCore/QDateTime>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

using namespace vo::detail;

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr std::int64_t secondsPerDay = 86400;
constexpr std::int64_t secondsPerMinute = 60;

// Takes fixed pieces off the front of a text; the first that is missing makes it invalid for good.
class Scanner
{
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
    {
    }

    int number(std::size_t digits)
    {
        int value = 0;
        for (; digits > 0; --digits)
            value = value * 10 + digit();
        return value;
    }

    void expect(char c)
    {
        if (!accept(c))
            m_isValid = false;
    }

    bool accept(char c)
    {
        if (m_rest.empty() || m_rest.front() != c)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    // One to nine digits, as nanoseconds.
    int fraction()
    {
        int value = digit();
        int count = 1;
        for (; count < 9 && !m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9'; ++count)
            value = value * 10 + digit();
        for (; count < 9; ++count)
            value *= 10;
        return value;
    }

    bool isComplete() const { return m_isValid && m_rest.empty(); }

private:
    int digit()
    {
        if (m_rest.empty() || m_rest.front() < '0' || m_rest.front() > '9') {
            m_isValid = false;
            return 0;
        }
        const int value = m_rest.front() - '0';
        m_rest.remove_prefix(1);
        return value;
    }

    std::string_view m_rest;
    bool m_isValid = true;
};

bool IsTime(const VoDateTime::Components& parts)
{
    const auto within = [](int value, int limit) { return value >= 0 && value < limit; };
    return within(parts.hour, 24) && within(parts.minute, 60) && within(parts.second, 60) &&
           within(parts.nanosecond, static_cast<int>(nanosecondsPerSecond));
}

// The instant of a date and time that is so many minutes ahead of universal time; none when there is no such date.
std::optional<VoTimePoint> InstantOf(const VoDateTime::Components& parts, int offsetMinutes)
{
    const CalendarDate date{parts.year, parts.month, parts.day};
    if (!IsDate(date) || !IsTime(parts))
        return std::nullopt;
    std::int64_t seconds = DayOf(date) * secondsPerDay + parts.hour * 3600 + parts.minute * 60 + parts.second -
                           offsetMinutes * secondsPerMinute;
    std::int64_t nanoseconds = parts.nanosecond;
    if (seconds < 0 && nanoseconds > 0) { // keeps the first instants within the clock's reach representable
        ++seconds;
        nanoseconds -= nanosecondsPerSecond;
    }
    return VoTimePoint(VoTimeDuration(VoSeconds(seconds)) + VoNanoseconds(nanoseconds));
}

} // namespace

VoDateTime::VoDateTime(VoTimePoint instant, Representation representation) noexcept
    : m_instant(instant)
    , m_representation(representation == Utc ? Utc : Local)
{
}

VoDateTime VoDateTime::FromUtc(const Components& components)
{
    if (const auto instant = InstantOf(components, 0))
        return VoDateTime(*instant, Utc);
    throw VoInvalidParameterException("Invalid date or time");
}

VoDateTime VoDateTime::Now(Representation representation) noexcept
{
    return VoDateTime(VoTimePoint::Now(), representation);
}

int VoDateTime::offsetMinutes() const
{
    if (isUtc())
        return 0;
    const std::int64_t seconds = FloorDivide(m_instant.timeSinceEpoch().count(), nanosecondsPerSecond);
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::LocalTime).offsetFromUtc() / static_cast<int>(secondsPerMinute);
}

VoDateTime::Components VoDateTime::components() const
{
    const std::int64_t count = m_instant.timeSinceEpoch().count();
    const std::int64_t instant = FloorDivide(count, nanosecondsPerSecond);
    const std::int64_t seconds = instant + offsetMinutes() * secondsPerMinute;
    const std::int64_t day = FloorDivide(seconds, secondsPerDay);
    const auto ofDay = static_cast<int>(seconds - day * secondsPerDay);
    const CalendarDate date = DateOf(day);
    Components parts;
    parts.year = static_cast<int>(date.year);
    parts.month = static_cast<int>(date.month);
    parts.day = static_cast<int>(date.day);
    parts.hour = ofDay / 3600;
    parts.minute = ofDay / 60 % 60;
    parts.second = ofDay % 60;
    parts.nanosecond = static_cast<int>(count % nanosecondsPerSecond);
    if (parts.nanosecond < 0)
        parts.nanosecond += static_cast<int>(nanosecondsPerSecond);
    return parts;
}

VoString VoDateTime::toString() const
{
    const Components parts = components();
    std::string text = Padded(parts.year, 4) + '-' + Padded(parts.month, 2) + '-' + Padded(parts.day, 2) + 'T' +
                       Padded(parts.hour, 2) + ':' + Padded(parts.minute, 2) + ':' + Padded(parts.second, 2) + '.' +
                       Padded(parts.nanosecond, 9);
    if (isUtc())
        return VoString(text + 'Z');
    const int offset = offsetMinutes();
    const int size = offset < 0 ? -offset : offset;
    return VoString(text + (offset < 0 ? '-' : '+') + Padded(size / 60, 2) + ':' + Padded(size % 60, 2));
}

VoString VoDateTime::Serialize(const VoDateTime& dateTime)
{
    return dateTime.toString();
}

VoDateTime VoDateTime::Deserialize(const VoString& text)
{
    Scanner scanner(text.toStdString());
    Components parts;
    parts.year = scanner.number(4);
    scanner.expect('-');
    parts.month = scanner.number(2);
    scanner.expect('-');
    parts.day = scanner.number(2);
    scanner.expect('T');
    parts.hour = scanner.number(2);
    scanner.expect(':');
    parts.minute = scanner.number(2);
    scanner.expect(':');
    parts.second = scanner.number(2);
    if (scanner.accept('.'))
        parts.nanosecond = scanner.fraction();

    int offset = 0;
    const bool isUtc = scanner.accept('Z');
    if (!isUtc) {
        const bool isBehind = scanner.accept('-');
        if (!isBehind)
            scanner.expect('+');
        const int hours = scanner.number(2);
        scanner.expect(':');
        const int minutes = scanner.number(2);
        if (hours > 23 || minutes > 59)
            throw VoInvalidConversionException(text, "VoDateTime");
        offset = (isBehind ? -1 : 1) * (hours * 60 + minutes);
    }
    try {
        const auto instant = InstantOf(parts, offset);
        if (scanner.isComplete() && instant)
            return VoDateTime(*instant, isUtc ? Utc : Local);
    } catch (const VoOverflowException&) { // a date beyond the clock's reach
    }
    throw VoInvalidConversionException(text, "VoDateTime");
}

std::ostream& operator<<(std::ostream& stream, const VoDateTime& dateTime)
{
    return stream << dateTime.toString();
}
