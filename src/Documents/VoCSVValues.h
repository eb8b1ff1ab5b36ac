#pragma once

#include <Core/VoExport.h>
#include <Core/VoVariant.h>
#include <Documents/VoCSVFormat.h>

#include <optional>
#include <string_view>

/// @file
/// What the text of a CSV field stands for, and the names of encodings. Pure.

namespace vo::csv {

/// The kind of value that an unquoted field stands for: Null when empty, Boolean for "true" and "false", Integer when
/// it is the plain decimal form of an `int`, Double when it is any other number that a Double holds, "inf", "-inf" or
/// "nan"; else String. Blanks around a value do not count, nor the case of "true" and "false".
///
/// What could not be written again as it stands is no number: one with a plus sign, or a zero before other digits, as
/// codes and telephone numbers have them; one whose digits a Double does not keep, such as 12345678901234567890 and
/// 1e-400; "NaN" and "Infinity" in any spelling but the writer's own. The digits are kept when the Double, written with
/// as many, gives the same.
VOCORE_EXPORT VoVariant::Type DetectedType(std::string_view field, const VoCSVFormat& format);
/// The value of that kind.
VOCORE_EXPORT VoVariant DetectedValue(std::string_view field, const VoCSVFormat& format);

/// "UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE", "Windows-1252" or "ISO-8859-1".
VOCORE_EXPORT const char* EncodingName(VoCSVFormat::Encoding encoding);
/// The encoding of such a name, or of "CP1252" or "Latin1"; case does not count. None for any other name.
VOCORE_EXPORT std::optional<VoCSVFormat::Encoding> EncodingNamed(std::string_view name);

} // namespace vo::csv
