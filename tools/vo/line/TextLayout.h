#pragma once

#include <Core/VoString.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace vo::tool {

/// Rows of two columns: what something is called, and what it does.
using TextRows = std::vector<std::pair<VoString, VoString>>;

/// Puts paragraphs into lines of at most `width` bytes; a word that is longer stands alone. Paragraphs are separated by
/// an empty line; single line ends within them are blanks. `first` begins the first line, `indent` blanks each further
/// one. What stands in [] is not broken as long as it fits into a line.
VoString Wrapped(const VoString& text, std::size_t width, const VoString& first = VoString(), std::size_t indent = 0);

/// The rows, indented and aligned, the right column wrapped. Where the left one is very wide, the right one begins
/// below it.
VoString TwoColumns(const TextRows& rows, std::size_t width);

} // namespace vo::tool
