#pragma once

#include <Core/detail/UTF8.h>
#include <Documents/VoCSVFormat.h>

#include <optional>
#include <string>
#include <string_view>

/// @file
/// The encodings of CSV files. Pure.

namespace vo::detail {

using TextEncoding = VoCSVFormat::Encoding;

/// A byte-order mark and what it stands for.
struct EncodingMark
{
    TextEncoding encoding;
    std::string_view bytes;
};

constexpr std::size_t LongestEncodingMark = 4;

/// The mark that a file begins with, seen in its first bytes.
std::optional<EncodingMark> MarkOf(std::string_view bytes);

/// The first character of bytes, of which there is at least one.
DecodedCharacter Decode(std::string_view bytes, TextEncoding encoding);

/// The first character of a text that cannot be written in the encoding; notUTF8 for bytes that are none.
std::optional<char32_t> FirstUnwritable(std::string_view text, TextEncoding encoding);
constexpr char32_t NotUTF8 = 0xffffffff;

/// Appends a text without unwritable characters, which is UTF-8, in another encoding.
void AppendEncoded(std::string& bytes, std::string_view text, TextEncoding encoding);

} // namespace vo::detail
