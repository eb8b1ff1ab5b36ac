#pragma once

#include <Core/VoUniquePtr.h>
#include <Time/VoDate.h>
#include <Time/VoTimeOfDay.h>
#include <Time/VoTimePoint.h>
#include <Time/VoTimeZone.h>

#include <cstdint>

class QDateTime;

/// Which instant is meant by a time that the clocks of a place skip when summer time begins, or show twice when it
/// ends.
enum class VoClockChange
{
    Compatible, ///< As most programs: of two the earlier, of a skipped one as much later as the clocks were set on.
    Earlier,    ///< The earlier of two; of a skipped one as much earlier.
    Later,      ///< The later of two; of a skipped one as much later.
    Refuse      ///< VoInvalidParameterException "Time does not exist: " or "Time is ambiguous: " + the time and zone.
};

/// An instant together with the way it is shown: in universal time, in the local time of this machine, or in that of a
/// named zone.
///
/// Texts are ISO 8601 with nanoseconds: "2024-05-01T12:34:56.000000000Z" in universal time,
/// "2024-05-01T14:34:56.000000000+02:00" in local time, "2024-05-01T14:34:56.000000000+02:00[Europe/Berlin]" in a named
/// zone (RFC 9557). The offset makes a local text unambiguous, also in the hour that the end of summer time repeats,
/// and on a machine in another zone; it has seconds where a place kept its mean time.
///
/// Patterns are those of VoDate and VoTimeOfDay together, and %z for the offset, %Z for the zone's identifier, which is
/// shown but not read back.
///
/// A value. Which zone is local is the system's affair and is asked at each call. Instants reach from 1677 to 2262;
/// what leaves them throws VoOverflowException.
class VOCORE_EXPORT VoDateTime
{
public:
    /// How the instant is shown.
    enum Representation : std::int32_t
    {
        Utc = 0,   ///< universal time
        Local = 1, ///< the machine's time zone
        Zone = 2   ///< a named zone
    };

    /// The parts of a date and time as it is shown.
    struct Components
    {
        int year = 1970;    ///< With four digits: the clock reaches from 1677 to 2262.
        int month = 1;      ///< 1 to 12.
        int day = 1;        ///< 1 to 31.
        int hour = 0;       ///< 0 to 23.
        int minute = 0;     ///< 0 to 59.
        int second = 0;     ///< 0 to 59.
        int nanosecond = 0; ///< 0 to 999,999,999.
    };

    VoDateTime() noexcept = default; ///< The beginning of 1970 in universal time.
    /// An instant, shown in that way.
    /// `representation` must not be Zone, which is taken for Local.
    explicit VoDateTime(VoTimePoint instant, Representation representation = Utc) noexcept;
    /// An instant, shown in the time of that zone.
    VoDateTime(VoTimePoint instant, VoTimeZone zone) noexcept;
    /// A date and time in universal time.
    /// @throws VoInvalidParameterException "Invalid date or time" for parts that no calendar has
    /// @throws VoOverflowException for a date beyond the clock's reach
    static VoDateTime FromUtc(const Components& components);
    /// A date and time as the clocks of this machine, or of a zone, show it. Throws as FromUtc(), and what `rule`
    /// says.
    /// @{
    static VoDateTime FromLocal(const Components& components, VoClockChange rule = VoClockChange::Compatible);
    static VoDateTime FromZone(const Components& components, const VoTimeZone& zone,
                               VoClockChange rule = VoClockChange::Compatible);
    static VoDateTime From(VoDate date, VoTimeOfDay time, const VoTimeZone& zone = VoTimeZone::Utc(),
                           VoClockChange rule = VoClockChange::Compatible);
    /// @}
    /// The system clock's time.
    static VoDateTime Now(Representation representation = Utc) noexcept;

    VoTimePoint timePoint() const noexcept { return m_instant; } ///< The instant.
    Representation representation() const noexcept;              ///< How it is shown.
    const VoTimeZone& zone() const noexcept { return m_zone; }   ///< The zone in whose time it is shown.
    bool isUtc() const noexcept { return m_zone.isUtc(); }       ///< Whether in universal time.
    VoDateTime toUtc() const noexcept;                           ///< The instant in universal time.
    VoDateTime toLocal() const noexcept;                         ///< The instant in local time.
    VoDateTime toZone(VoTimeZone zone) const noexcept;           ///< The instant in the time of a zone.

    /// Seconds that the time shown is ahead of universal time at this instant.
    int offsetSeconds() const { return m_zone.offsetSeconds(m_instant); }
    /// The whole minutes of offsetSeconds().
    int offsetMinutes() const { return offsetSeconds() / 60; }
    /// The parts of the date and time as it is shown.
    Components components() const;
    VoDate date() const;           ///< The date shown.
    VoTimeOfDay timeOfDay() const; ///< The time shown.

    /// The same time of day on another day, as the calendar and the clocks of the zone have it: a day after noon is
    /// noon, even if 23 hours later. @{
    VoDateTime addDays(std::int64_t days, VoClockChange rule = VoClockChange::Compatible) const;
    VoDateTime addMonths(std::int64_t months, VoShortMonth shortMonth = VoShortMonth::LastDay,
                         VoClockChange rule = VoClockChange::Compatible) const;
    VoDateTime addYears(std::int64_t years, VoShortMonth shortMonth = VoShortMonth::LastDay,
                        VoClockChange rule = VoClockChange::Compatible) const;
    /// @}

    /// Later or earlier by a duration of real time. @{
    VoDateTime& operator+=(VoTimeDuration duration);
    VoDateTime& operator-=(VoTimeDuration duration);
    friend VoDateTime operator+(VoDateTime dateTime, VoTimeDuration duration) { return dateTime += duration; }
    friend VoDateTime operator-(VoDateTime dateTime, VoTimeDuration duration) { return dateTime -= duration; }
    /// @}
    /// The real time from `b` to `a`.
    friend VoTimeDuration operator-(const VoDateTime& a, const VoDateTime& b) { return a.m_instant - b.m_instant; }

    /// The text described above.
    VoString toString() const;
    VoString
    toString(const VoString& pattern) const; ///< @throws VoInvalidParameterException "Invalid pattern: " + pattern
    /// Reads a text by a pattern: with %z the instant that it names, shown in `zone`, else a time of that zone. What
    /// the pattern does not name is that of the beginning of 1970.
    /// @throws VoInvalidParameterException "Invalid pattern: " + pattern, or what `rule` says
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoDateTime"
    static VoDateTime Parse(const VoString& text, const VoString& pattern, const VoTimeZone& zone = VoTimeZone::Utc(),
                            VoClockChange rule = VoClockChange::Compatible);
    /// As toString().
    static VoString Serialize(const VoDateTime& dateTime);
    /// Reverses Serialize(): an instant with "Z" is in universal time, one with an offset in local time, whatever the
    /// offset, one with an offset and a zone that the system knows in that zone. One to nine fraction digits may be
    /// given, or none.
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoDateTime", for any other text
    static VoDateTime Deserialize(const VoString& text);
    /// Reads an element's attribute "rep" ("utc" or "local") and text.
    /// @throws VoUnknownXMLAttributeException without the attribute
    /// @throws VoInvalidConversionException for another value of the attribute, or as Deserialize()
    static VoUniquePtr<VoDateTime> XMLLoader(VoXMLElementReader& element);

    /// From and to the framework's kind, which has milliseconds; the zone is kept where both know it, an offset becomes
    /// local time. @throws VoInvalidParameterException "Invalid date or time" for one that is not valid @{
    static VoDateTime FromQDateTime(const QDateTime& dateTime);
    QDateTime toQDateTime() const;
    /// @}

    /// Comparison of the instants, however they are shown.
    /// @{
    friend bool operator==(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant == b.m_instant; }
    friend bool operator!=(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant != b.m_instant; }
    friend bool operator<(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant < b.m_instant; }
    friend bool operator<=(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant <= b.m_instant; }
    friend bool operator>(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant > b.m_instant; }
    friend bool operator>=(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant >= b.m_instant; }
    /// @}

    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoDateTime& dateTime);

private:
    VoTimePoint m_instant;
    VoTimeZone m_zone;
};

/// @cond INTERNAL
template <>
struct std::hash<VoDateTime>
{
    std::size_t operator()(const VoDateTime& dateTime) const noexcept
    {
        return std::hash<VoTimePoint>()(dateTime.timePoint());
    }
};
/// @endcond
