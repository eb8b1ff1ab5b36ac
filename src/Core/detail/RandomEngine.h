#pragma once

#include <Core/VoThrow.h>

#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>

/// @file
/// The engine behind random numbers and the drawing of integers from it.

namespace vo::detail {

/// Its numbers are fixed by the language's standard; the standard's distributions are not and are not used.
using RandomEngine = std::mt19937_64;

// A thread's own engine is used by whatever runs while the thread or the process ends.
static_assert(std::is_trivially_destructible_v<RandomEngine>);

/// An engine that nobody can repeat, seeded from the system's random device.
RandomEngine EngineFromSystem();

/// Drawn uniformly from the closed range `low` .. `high`, by a function that gives 64 random bits.
/// @throws VoInvalidParameterException "Empty range" when `low` is greater than `high`
template <typename Bits>
std::int64_t DrawInteger(std::int64_t low, std::int64_t high, Bits&& bits)
{
    if (low > high)
        ThrowInvalidParameter("Empty range");
    const std::uint64_t range = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;
    if (range == 0) // all 2^64 integers
        return static_cast<std::int64_t>(bits());
    // Numbers beyond the last whole multiple of the range would make the lower results likelier.
    const std::uint64_t rejected = (std::numeric_limits<std::uint64_t>::max() - range + 1) % range;
    std::uint64_t drawn = bits();
    while (drawn > std::numeric_limits<std::uint64_t>::max() - rejected)
        drawn = bits();
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(low) + drawn % range);
}

/// Drawn as DrawInteger() draws, from an engine of this thread that nobody can repeat. May be called while threads and
/// static objects end.
std::int64_t RandomInteger(std::int64_t low, std::int64_t high);

} // namespace vo::detail
