#pragma once

#include <cstddef>
#include <cstdint>

namespace vo::detail {

/// Takes `blocks` blocks of 136 bytes from each of the pointers into the state of the same number (25 words each, one
/// behind the other).
using KeccakAbsorb = void (*)(std::uint64_t* states, const char* const* bytes, std::size_t blocks);

// One for each kind of processor that has words wide enough; each in a source compiled for that kind only.
void KeccakAbsorbAvx2(std::uint64_t* states, const char* const* bytes, std::size_t blocks);
void KeccakAbsorbAvx512(std::uint64_t* states, const char* const* bytes, std::size_t blocks);

} // namespace vo::detail
