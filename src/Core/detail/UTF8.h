#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// UTF-8 byte by byte, for what must know whether and where bytes are no text. Strict: no overlong forms, no
/// surrogates, nothing beyond U+10FFFF.

namespace vo::detail {

/// What stands at the beginning of some bytes.
struct DecodedCharacter
{
    enum class State
    {
        Whole,
        Incomplete, ///< More bytes could complete it.
        Invalid
    };
    char32_t code = 0;    ///< Of a whole character.
    std::size_t size = 0; ///< Its bytes.
    State state = State::Invalid;
};

/// The first character of bytes, of which there is at least one.
VOCORE_PRIVATE_EXPORT DecodedCharacter DecodeUTF8(std::string_view bytes);

/// How many bytes at the beginning are whole characters.
VOCORE_PRIVATE_EXPORT std::size_t ValidUTF8Prefix(std::string_view bytes);

/// Appends a character, which is a Unicode scalar value.
VOCORE_PRIVATE_EXPORT void AppendUTF8(std::string& text, char32_t code);

} // namespace vo::detail
