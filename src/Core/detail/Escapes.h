#pragma once

#include <string>

/// @file
/// What the writers of URLs, names of parts and cells share.

namespace vo::detail {

/// Whether a byte is a control character of ASCII, U+007F among them.
inline bool IsControl(char c) noexcept
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Appends a byte as two digits, "C3".
inline void AppendHex(std::string& text, char byte)
{
    constexpr char digits[] = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    text += digits[value >> 4];
    text += digits[value & 0xF];
}

/// Appends a byte as in a URL, "%C3".
inline void AppendPercent(std::string& text, char byte)
{
    text += '%';
    AppendHex(text, byte);
}

} // namespace vo::detail
