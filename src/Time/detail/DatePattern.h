#pragma once

#include <string>
#include <string_view>

/// @file
/// Dates and times by pattern: the letters of the C library's strftime, in English whatever the locale.

namespace vo::detail {

/// What a pattern can name.
struct DateFields
{
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int nanosecond = 0;
    int offsetSeconds = 0;  ///< The zone shown is ahead of universal time by so much.
    bool hasOffset = false; ///< When read: whether the text named an offset.
    std::string zone;       ///< The zone's name, only shown.
};

/// Which letters of a pattern have a meaning.
enum class DateParts
{
    Date,
    Time,
    All ///< Also offset and zone.
};

/// The text.
/// @throws VoInvalidParameterException "Invalid pattern: " + pattern for a letter without a meaning
std::string FormatDate(std::string_view pattern, DateParts parts, const DateFields& fields);

/// Whether the whole text is as the pattern says; the fields that the pattern does not name stay as they were. Fields
/// are within their ranges then, but the day may be beyond the end of its month. Throws as FormatDate().
bool ParseDate(std::string_view pattern, DateParts parts, std::string_view text, DateFields& fields);

/// "+hh:mm", with ":ss" when there are seconds.
std::string OffsetText(int seconds);

class TextScanner;

/// Reverses OffsetText(); the scanner becomes invalid for anything else.
int ScanOffset(TextScanner& scanner);

} // namespace vo::detail
