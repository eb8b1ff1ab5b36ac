#include <Time/VoDateTime.h>

#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Time/detail/CalendarDate.h>
#include <Time/detail/DatePattern.h>
#include <Time/detail/TextScanner.h>
#include <Time/detail/ZoneData.h>

#include <QtCore/QDateTime>
#include <QtCore/QTimeZone>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

using namespace vo::detail;

namespace {

constexpr std::int64_t NanosecondsPerSecond = 1000000000;

// Seconds of a date and time as if it were in universal time; none when there is no such date.
std::optional<std::int64_t> WallClock(const VoDateTime::Components& parts)
{
    const CalendarDate date{parts.year, parts.month, parts.day};
    if (!IsDate(date) || !IsTime(parts.hour, parts.minute, parts.second, parts.nanosecond))
        return std::nullopt;
    return DayOf(date) * SecondsPerDay + parts.hour * 3600 + parts.minute * 60 + parts.second;
}

VoTimePoint InstantOf(std::int64_t seconds, std::int64_t nanoseconds)
{
    if (seconds < 0 && nanoseconds > 0) { // keeps the first instants within the clock's reach representable
        ++seconds;
        nanoseconds -= NanosecondsPerSecond;
    }
    return VoTimePoint(VoTimeDuration(VoSeconds(seconds)) + VoNanoseconds(nanoseconds));
}

std::int64_t OffsetAt(const VoTimeZone& zone, std::int64_t seconds)
{
    constexpr std::int64_t reach = 9223372036; // seconds that nanoseconds of 64 bits hold
    return zone.offsetSeconds(VoTimePoint(VoSeconds(std::clamp(seconds, -reach, reach))));
}

// The earliest and the latest instant that a time of a zone can mean, in seconds. They are the same for most; for a
// time that the clocks skip, neither shows it.
struct Meanings
{
    std::int64_t earlier;
    std::int64_t later;
    bool exists;
};

// No zone is a day away from universal time, so the offsets a day before and after are those before and after a change;
// those at the instants that they lead to help where there are two changes within the two days.
Meanings MeaningsOf(const VoTimeZone& zone, std::int64_t wallClock)
{
    const std::int64_t before = OffsetAt(zone, wallClock - SecondsPerDay);
    const std::int64_t after = OffsetAt(zone, wallClock + SecondsPerDay);
    std::optional<Meanings> found;
    for (const std::int64_t offset :
         {before, after, OffsetAt(zone, wallClock - before), OffsetAt(zone, wallClock - after)}) {
        const std::int64_t instant = wallClock - offset;
        if (OffsetAt(zone, instant) != offset)
            continue;
        if (!found)
            found = Meanings{instant, instant, true};
        found->earlier = std::min(found->earlier, instant);
        found->later = std::max(found->later, instant);
    }
    return found.value_or(Meanings{wallClock - std::max(before, after), wallClock - std::min(before, after), false});
}

DateFields FieldsOf(const VoDateTime::Components& parts)
{
    DateFields fields;
    fields.year = parts.year;
    fields.month = parts.month;
    fields.day = parts.day;
    fields.hour = parts.hour;
    fields.minute = parts.minute;
    fields.second = parts.second;
    fields.nanosecond = parts.nanosecond;
    return fields;
}

VoString Shown(const VoDateTime::Components& parts, const VoTimeZone& zone)
{
    return VoString(FormatDate("%Y-%m-%dT%H:%M:%S ", DateParts::All, FieldsOf(parts))) + zone.id();
}

std::int64_t Resolve(const VoDateTime::Components& parts, std::int64_t wallClock, const VoTimeZone& zone,
                     VoClockChange rule)
{
    const Meanings meanings = MeaningsOf(zone, wallClock);
    if (rule == VoClockChange::Refuse && !meanings.exists)
        throw VoInvalidParameterException("Time does not exist: " + Shown(parts, zone));
    if (rule == VoClockChange::Refuse && meanings.earlier != meanings.later)
        throw VoInvalidParameterException("Time is ambiguous: " + Shown(parts, zone));
    const bool takesLater = rule == VoClockChange::Later || (rule == VoClockChange::Compatible && !meanings.exists);
    return takesLater ? meanings.later : meanings.earlier;
}

// The zone behind an offset: "[Europe/Berlin]", or nothing for local time.
VoTimeZone ScanZone(TextScanner& scanner)
{
    if (!scanner.accept('['))
        return VoTimeZone::Local();
    const std::string id(scanner.rest().substr(0, scanner.rest().find(']')));
    scanner.skip(id.size());
    scanner.expect(']');
    return VoTimeZone(VoString(id));
}

DateFields FieldsOf(const VoDateTime& dateTime)
{
    DateFields fields = FieldsOf(dateTime.components());
    fields.offsetSeconds = dateTime.offsetSeconds();
    fields.hasOffset = true;
    fields.zone = dateTime.zone().id().toStdString();
    return fields;
}

} // namespace

VoDateTime::VoDateTime(VoTimePoint instant, Representation representation) noexcept
    : m_instant(instant)
    , m_zone(representation == Utc ? VoTimeZone::Utc() : VoTimeZone::Local())
{
}

VoDateTime::VoDateTime(VoTimePoint instant, VoTimeZone zone) noexcept
    : m_instant(instant)
    , m_zone(std::move(zone))
{
}

VoDateTime VoDateTime::FromUtc(const Components& components)
{
    return FromZone(components, VoTimeZone::Utc());
}

VoDateTime VoDateTime::FromLocal(const Components& components, VoClockChange rule)
{
    return FromZone(components, VoTimeZone::Local(), rule);
}

VoDateTime VoDateTime::FromZone(const Components& components, const VoTimeZone& zone, VoClockChange rule)
{
    const auto wallClock = WallClock(components);
    if (!wallClock)
        throw VoInvalidParameterException("Invalid date or time");
    const std::int64_t seconds = zone.isUtc() ? *wallClock : Resolve(components, *wallClock, zone, rule);
    return VoDateTime(InstantOf(seconds, components.nanosecond), zone);
}

VoDateTime VoDateTime::From(VoDate date, VoTimeOfDay time, const VoTimeZone& zone, VoClockChange rule)
{
    return FromZone(
        {date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second(), time.nanosecond()}, zone,
        rule);
}

VoDateTime VoDateTime::Now(Representation representation) noexcept
{
    return VoDateTime(VoTimePoint::Now(), representation);
}

VoDateTime::Representation VoDateTime::representation() const noexcept
{
    return m_zone.isUtc() ? Utc : m_zone.isLocal() ? Local : Zone;
}

VoDateTime VoDateTime::toUtc() const noexcept
{
    return toZone(VoTimeZone::Utc());
}

VoDateTime VoDateTime::toLocal() const noexcept
{
    return toZone(VoTimeZone::Local());
}

VoDateTime VoDateTime::toZone(VoTimeZone zone) const noexcept
{
    return VoDateTime(m_instant, std::move(zone));
}

VoDateTime::Components VoDateTime::components() const
{
    const std::int64_t count = m_instant.timeSinceEpoch().count();
    const std::int64_t instant = FloorDivide(count, NanosecondsPerSecond);
    const std::int64_t seconds = instant + offsetSeconds();
    const std::int64_t day = FloorDivide(seconds, SecondsPerDay);
    const auto ofDay = static_cast<int>(seconds - day * SecondsPerDay);
    const CalendarDate date = DateOf(day);
    Components parts;
    parts.year = static_cast<int>(date.year);
    parts.month = static_cast<int>(date.month);
    parts.day = static_cast<int>(date.day);
    parts.hour = ofDay / 3600;
    parts.minute = ofDay / 60 % 60;
    parts.second = ofDay % 60;
    parts.nanosecond = static_cast<int>(count % NanosecondsPerSecond);
    if (parts.nanosecond < 0)
        parts.nanosecond += static_cast<int>(NanosecondsPerSecond);
    return parts;
}

VoDate VoDateTime::date() const
{
    const Components parts = components();
    return VoDate(parts.year, parts.month, parts.day);
}

VoTimeOfDay VoDateTime::timeOfDay() const
{
    const Components parts = components();
    return VoTimeOfDay(parts.hour, parts.minute, parts.second, parts.nanosecond);
}

VoDateTime VoDateTime::addDays(std::int64_t days, VoClockChange rule) const
{
    return From(date().addDays(days), timeOfDay(), m_zone, rule);
}

VoDateTime VoDateTime::addMonths(std::int64_t months, VoShortMonth shortMonth, VoClockChange rule) const
{
    return From(date().addMonths(months, shortMonth), timeOfDay(), m_zone, rule);
}

VoDateTime VoDateTime::addYears(std::int64_t years, VoShortMonth shortMonth, VoClockChange rule) const
{
    return From(date().addYears(years, shortMonth), timeOfDay(), m_zone, rule);
}

VoDateTime& VoDateTime::operator+=(VoTimeDuration duration)
{
    m_instant += duration;
    return *this;
}

VoDateTime& VoDateTime::operator-=(VoTimeDuration duration)
{
    m_instant -= duration;
    return *this;
}

VoString VoDateTime::toString() const
{
    const DateFields fields = FieldsOf(*this);
    const std::string text = FormatDate("%Y-%m-%dT%H:%M:%S.%f", DateParts::All, fields);
    if (isUtc())
        return VoString(text + 'Z');
    const std::string withOffset = text + OffsetText(fields.offsetSeconds);
    return VoString(m_zone.isLocal() ? withOffset : withOffset + '[' + fields.zone + ']');
}

VoString VoDateTime::toString(const VoString& pattern) const
{
    return VoString(FormatDate(pattern.toStdString(), DateParts::All, FieldsOf(*this)));
}

VoDateTime VoDateTime::Parse(const VoString& text, const VoString& pattern, const VoTimeZone& zone, VoClockChange rule)
{
    DateFields fields;
    const bool isRead = ParseDate(pattern.toStdString(), DateParts::All, text.toStdString(), fields);
    const Components parts{fields.year,   fields.month,  fields.day,       fields.hour,
                           fields.minute, fields.second, fields.nanosecond};
    const auto wallClock = WallClock(parts);
    if (!isRead || !wallClock)
        throw VoInvalidConversionException(text, "VoDateTime");
    try {
        if (!fields.hasOffset)
            return FromZone(parts, zone, rule);
        return VoDateTime(InstantOf(*wallClock - fields.offsetSeconds, parts.nanosecond), zone);
    } catch (const VoOverflowException&) { // a date beyond the clock's reach
        throw VoInvalidConversionException(text, "VoDateTime");
    }
}

VoString VoDateTime::Serialize(const VoDateTime& dateTime)
{
    return dateTime.toString();
}

VoDateTime VoDateTime::Deserialize(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    TextScanner scanner(bytes);
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
    const bool isUtc = scanner.accept('Z');
    const int offset = isUtc ? 0 : ScanOffset(scanner);
    try {
        const VoTimeZone zone = isUtc ? VoTimeZone::Utc() : ScanZone(scanner);
        const auto wallClock = WallClock(parts);
        if (scanner.isComplete() && wallClock)
            return VoDateTime(InstantOf(*wallClock - offset, parts.nanosecond), zone);
    } catch (const VoOverflowException&) {         // a date beyond the clock's reach
    } catch (const VoInvalidParameterException&) { // an unknown zone
    }
    throw VoInvalidConversionException(text, "VoDateTime");
}

VoDateTime VoDateTime::FromQDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
        throw VoInvalidParameterException("Invalid date or time");
    const VoTimePoint instant{VoTimeDuration(VoMilliseconds(dateTime.toMSecsSinceEpoch()))};
    if (dateTime.timeSpec() == Qt::UTC)
        return VoDateTime(instant, Utc);
    const VoString id(ZoneIdOfFramework(dateTime.timeZone().id().toStdString()));
    if (dateTime.timeSpec() == Qt::TimeZone && VoTimeZone::IsKnown(id))
        return VoDateTime(instant, VoTimeZone(id));
    return VoDateTime(instant, Local);
}

QDateTime VoDateTime::toQDateTime() const
{
    const qint64 milliseconds = FloorDivide(m_instant.timeSinceEpoch().count(), 1000000);
    if (representation() == Zone)
        return QDateTime::fromMSecsSinceEpoch(
            milliseconds, QTimeZone(QByteArray::fromStdString(FrameworkZoneId(m_zone.id().toStdString()))));
    return QDateTime::fromMSecsSinceEpoch(milliseconds, isUtc() ? Qt::UTC : Qt::LocalTime);
}

std::ostream& operator<<(std::ostream& stream, const VoDateTime& dateTime)
{
    return stream << dateTime.toString();
}
