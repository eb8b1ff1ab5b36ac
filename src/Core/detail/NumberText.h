#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// @file
/// Numbers to text and back for the whole library, always in the "C" numeric locale: creating an application object
/// changes the process locale, and 1.5 must not become 1,5 in documents.

namespace vo::detail {

/// Decimal digits, with "-" when negative.
VOCORE_PRIVATE_EXPORT std::string IntegerText(long long value);
/// Decimal digits.
VOCORE_PRIVATE_EXPORT std::string UnsignedText(unsigned long long value);
/// Like C "%f": six decimals.
VOCORE_PRIVATE_EXPORT std::string FixedText(double value);
/// Like C "%.*g": `precision` significant digits, at most 32.
VOCORE_PRIVATE_EXPORT std::string GeneralText(double value, int precision = 6);

/// The shortest decimal text that ParseDouble() reads as the same number: "0.1", "1e+300", "inf", "nan".
VOCORE_PRIVATE_EXPORT std::string ShortestText(double value);

/// What parsing the beginning of a text gave.
struct ParsedDouble
{
    double value = 0;         ///< Plus or minus infinity when too large, zero when too small.
    std::size_t consumed = 0; ///< Bytes read, leading white space included; 0 when there is no number.
};

/// Reads a number like C `strtod`: after white space, decimal, hexadecimal, "inf", "infinity" or "nan".
VOCORE_PRIVATE_EXPORT ParsedDouble ParseDouble(std::string_view text);

/// Reads a number like C `atoi`. What lies beyond `long long` is clamped, what lies beyond `int` keeps its low bits.
VOCORE_PRIVATE_EXPORT int ParseInt(std::string_view text);

/// Reads a number like `istream >> size_t` in the classic locale.
VOCORE_PRIVATE_EXPORT std::size_t ParseSize(std::string_view text);

/// The number that the whole text, "-" and digits, stands for.
VOCORE_PRIVATE_EXPORT std::optional<long long> ParseInteger(std::string_view text);

} // namespace vo::detail
