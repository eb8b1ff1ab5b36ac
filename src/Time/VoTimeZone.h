#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Time/VoTimePoint.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>

/// The rules by which the clocks of a place are set: universal time, the zone of this machine, or one of the IANA
/// database, by its identifier ("Europe/Berlin").
///
/// A value, cheap to copy. Offsets come from the zone data of the system, for all years that time points reach: summer
/// time of the past as it was recorded, that of the future by the rules known today, and before a zone's first record
/// the mean time of its place, whose offset has odd seconds. Safe to ask from several threads; which zone the machine's
/// is, is asked of the system at each call.
class VOCORE_EXPORT VoTimeZone
{
public:
    VoTimeZone() noexcept; ///< Universal time.
    /// A zone by its IANA identifier, whose case counts; "UTC" is universal time.
    /// @throws VoInvalidParameterException "Unknown time zone: " + id
    explicit VoTimeZone(const VoString& id);
    VoTimeZone(const VoTimeZone& other) noexcept;            ///< Shares the data.
    VoTimeZone& operator=(const VoTimeZone& other) noexcept; ///< Shares the data.
    VoTimeZone(VoTimeZone&& other) noexcept;                 ///< Leaves universal time.
    VoTimeZone& operator=(VoTimeZone&& other) noexcept;      ///< Leaves universal time.
    ~VoTimeZone();

    static VoTimeZone Utc() noexcept;   ///< Universal time.
    static VoTimeZone Local() noexcept; ///< The zone of this machine.
    /// Whether the system knows a zone of that identifier.
    static bool IsKnown(const VoString& id);
    /// The identifiers that the system knows, sorted.
    static VoDeque<VoString> Ids();

    bool isUtc() const noexcept { return m_kind == Kind::Utc; }     ///< Whether universal time.
    bool isLocal() const noexcept { return m_kind == Kind::Local; } ///< Whether the zone of this machine.
    /// The identifier; "UTC" for universal time, "Local" for the zone of this machine.
    VoString id() const;

    /// Seconds that clocks of the zone are ahead of universal time at an instant.
    int offsetSeconds(VoTimePoint instant) const;

    /// Comparison of the identifiers, so the machine's zone differs from the same zone by its name. @{
    friend VOCORE_EXPORT bool operator==(const VoTimeZone& a, const VoTimeZone& b) noexcept;
    friend bool operator!=(const VoTimeZone& a, const VoTimeZone& b) noexcept { return !(a == b); }
    /// @}

    /// Writes id().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoTimeZone& zone);

private:
    enum class Kind : unsigned char
    {
        Utc,
        Local,
        Named
    };
    class Private;
    friend struct std::hash<VoTimeZone>;

    explicit VoTimeZone(Kind kind) noexcept;

    Kind m_kind = Kind::Utc;
    std::shared_ptr<const Private> m_private; // of a named zone; never changed, so shared by the copies
};

/// @cond INTERNAL
template <>
struct VOCORE_EXPORT std::hash<VoTimeZone>
{
    std::size_t operator()(const VoTimeZone& zone) const noexcept;
};
/// @endcond
