#pragma once

#include <cstdint>

class VoString;

/// The named colours of CSS.
namespace vo::detail {

/// Red, green and blue of a name, whatever its case; null when there is none.
const std::uint32_t* FindColour(const VoString& name);

/// The first name of red, green and blue in the alphabet; empty when there is none.
const char* ColourName(std::uint32_t rgb);

} // namespace vo::detail
