#pragma once

#include <Core/VoExport.h>
#include <Core/VoVariant.h>

#include <string_view>

/// @file
/// What the text of a CSV field stands for.

struct VoCSVFormat;

namespace vo::detail {

/// The kind of value that an unquoted field stands for: Null when empty, Boolean, Integer when it is the plain decimal
/// form of an `int`, Double when it is any other finite number, "inf", "infinity" or "nan"; else String. Case, and
/// blanks around a value, do not count.
VOCORE_PRIVATE_EXPORT VoVariant::Type DetectedType(std::string_view field);

/// The value of that kind.
VOCORE_PRIVATE_EXPORT VoVariant DetectedValue(std::string_view field);

/// Throws VoInvalidParameterException "Invalid CSV format" for a separator or a quote that could not be told from
/// other characters.
void RequireValid(const VoCSVFormat& format);

} // namespace vo::detail
