#pragma once

#include <Core/VoExport.h>
#include <Core/VoVariant.h>

#include <string>
#include <string_view>

/// @file
/// What the text of a CSV field stands for.

class VoCSVReader;
struct VoCSVFormat;

namespace vo::detail {

/// The kind of value that an unquoted field stands for: Null when empty, Boolean for "true" and "false", Integer when
/// it is the plain decimal form of an `int`, Double when it is any other number that a Double holds, "inf", "-inf" or
/// "nan"; else String. Blanks around a value do not count, nor the case of "true" and "false".
///
/// What could not be written again as it stands is no number: one with a plus sign, or a zero before other digits, as
/// codes and telephone numbers have them; one whose digits a Double does not keep, such as 12345678901234567890 and
/// 1e-400; "NaN" and "Infinity" in any spelling but the writer's own. The digits are kept when the Double, written with
/// as many, gives the same.
VOCORE_PRIVATE_EXPORT VoVariant::Type DetectedType(std::string_view field, const VoCSVFormat& format);

/// The value of that kind.
VOCORE_PRIVATE_EXPORT VoVariant DetectedValue(std::string_view field, const VoCSVFormat& format);

/// The value of a field of the reader's row: a String when it stands in quotes or when types are not detected.
VoVariant FieldValue(const VoCSVReader& reader, std::size_t field, bool detectTypes, const VoCSVFormat& format);

/// The text of a Double, which is read as one again.
std::string DoubleText(double value, const VoCSVFormat& format);

/// @throws VoInvalidParameterException "Invalid CSV format" for a separator, a quote or a line break that could not be
/// told from other characters, or not be written in the encoding
void RequireValid(const VoCSVFormat& format);

} // namespace vo::detail
