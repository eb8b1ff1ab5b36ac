#pragma once

#include <Core/VoExport.h>
#include <Core/VoVariant.h>

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// What the text of a CSV field stands for.

class VoCSVReader;
struct VoCSVFormat;

namespace vo::detail {

/// The value of a field of the reader's row: a String when it stands in quotes or when types are not detected.
VoVariant FieldValue(const VoCSVReader& reader, std::size_t field, bool detectTypes, const VoCSVFormat& format);

/// The bytes that are read or written at a time.
inline constexpr std::size_t CSVBlockSize = std::size_t{256} * 1024;

/// What may stand around a field without belonging to it.
inline bool IsCSVBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// The text of a Double, which is read as one again.
std::string DoubleText(double value, const VoCSVFormat& format);

/// @throws VoInvalidParameterException "Invalid CSV format" for a separator, a quote or a line break that could not be
/// told from other characters, or not be written in the encoding
void RequireValid(const VoCSVFormat& format);

} // namespace vo::detail
