#pragma once

#include <Core/VoUniquePtr.h>
#include <Time/VoTimePoint.h>

#include <cstdint>

/// An instant together with the way it is shown: in universal time, or in the local time of this machine.
///
/// Texts are ISO 8601 with nanoseconds: "2024-05-01T12:34:56.000000000Z" in universal time,
/// "2024-05-01T14:34:56.000000000+02:00" in local time. The offset makes a local text unambiguous, also in the hour
/// that the end of summer time repeats, and on a machine in another zone.
///
/// A value. Which zone is local is the system's affair and is asked at each call.
class VOCORE_EXPORT VoDateTime
{
public:
    /// How the instant is shown.
    enum Representation : std::int32_t
    {
        Utc = 0,  ///< universal time
        Local = 1 ///< the machine's time zone
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
    explicit VoDateTime(VoTimePoint instant, Representation representation = Utc) noexcept;
    /// A date and time in universal time. Throws VoInvalidParameterException "Invalid date or time" for parts that no
    /// calendar has, VoOverflowException for a date beyond the clock's reach.
    static VoDateTime FromUtc(const Components& components);
    /// The system clock's time.
    static VoDateTime Now(Representation representation = Utc) noexcept;

    VoTimePoint timePoint() const noexcept { return m_instant; }                 ///< The instant.
    Representation representation() const noexcept { return m_representation; }  ///< How it is shown.
    bool isUtc() const noexcept { return m_representation == Utc; }              ///< Whether in universal time.
    VoDateTime toUtc() const noexcept { return VoDateTime(m_instant, Utc); }     ///< The instant in universal time.
    VoDateTime toLocal() const noexcept { return VoDateTime(m_instant, Local); } ///< The instant in local time.

    /// Minutes that the time shown is ahead of universal time at this instant.
    int offsetMinutes() const;
    /// The parts of the date and time as it is shown.
    Components components() const;

    /// The text described above.
    VoString toString() const;
    /// As toString().
    static VoString Serialize(const VoDateTime& dateTime);
    /// Reverses Serialize(): an instant with "Z" is in universal time, one with an offset in local time, whatever the
    /// offset. One to nine fraction digits may be given, or none.
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to VoDateTime", for any other text
    static VoDateTime Deserialize(const VoString& text);
    /// Reads an element's attribute "rep" ("utc" or "local") and text.
    /// @throws VoUnknownXMLAttributeException without the attribute
    /// @throws VoInvalidConversionException for another value of the attribute, or as Deserialize()
    static VoUniquePtr<VoDateTime> XMLLoader(VoXMLElementReader& element);

    /// Comparison of the instants, however they are shown.
    /// @{
    friend bool operator==(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant == b.m_instant; }
    friend bool operator!=(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant != b.m_instant; }
    friend bool operator<(const VoDateTime& a, const VoDateTime& b) noexcept { return a.m_instant < b.m_instant; }
    /// @}

    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoDateTime& dateTime);

private:
    VoTimePoint m_instant;
    Representation m_representation = Utc;
};
