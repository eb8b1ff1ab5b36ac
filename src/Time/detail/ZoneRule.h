#pragma once

#include <Core/VoExport.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// @file
/// The rule by which a zone goes on after its last recorded change: that of the environment variable TZ in POSIX, with
/// the times of -167 to 167 hours that RFC 8536 allows.

namespace vo::detail {

class TextScanner;

/// The day and time of a year at which clocks are set.
class ZoneRuleDate
{
public:
    /// Reads "M10.5.0/3", "J60" or "59"; what is none makes the scanner invalid.
    explicit ZoneRuleDate(TextScanner& scanner);
    ZoneRuleDate() = default;

    /// Seconds since 1970 by the clocks that are about to be set.
    std::int64_t wallClock(std::int64_t year) const;

private:
    enum class Kind
    {
        DayWithoutLeapDay, ///< m_day is 1 to 365, and 29 February is not counted.
        DayOfYear,         ///< m_day is 0 to 365.
        WeekdayOfMonth     ///< m_day is 0 for Sunday to 6, of week 1 to 5 of the month, which is the last.
    };
    std::int64_t day(std::int64_t year) const;

    Kind m_kind = Kind::DayOfYear;
    int m_month = 1;
    int m_week = 1;
    int m_day = 0;
    int m_time = 7200; // seconds after midnight
};

/// The rule of a zone, with or without summer time.
class VOCORE_PRIVATE_EXPORT ZoneRule
{
public:
    /// Reads "CET-1CEST,M3.5.0,M10.5.0/3" or "UTC0"; none for what is no rule.
    static std::optional<ZoneRule> Read(std::string_view text);
    /// The offset at an instant.
    int offset(std::int64_t instant) const;

private:
    int m_standard = 0;
    int m_summer = 0;
    bool m_hasSummer = false;
    ZoneRuleDate m_begin;
    ZoneRuleDate m_end;
};

} // namespace vo::detail
