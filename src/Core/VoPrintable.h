#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>

/// @file
/// How texts of files and of the network are shown to people, in logs and on terminals alike. Pure.

namespace vo {

/// Whether a character could steer a terminal, forge lines or turn the order of a text around: control characters, also
/// those from U+007F to U+009F, line and paragraph separators, and embeddings, overrides and isolates of direction.
VOCORE_EXPORT bool IsUnprintable(char32_t code);

/// The text with such characters, and bytes that are not UTF-8, escaped: as "\n", "\r" or "\t", up to U+009F as "\x1b",
/// beyond as "\u2028". Backslashes stay as they are.
VOCORE_EXPORT VoString Printable(const VoString& text);

} // namespace vo
