#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

// Included only by the sources that are compiled for one kind of processor: nothing in here may be a function that
// other sources also make, or the linker could give them the one that their processor does not know.
namespace {

/// Keccak-f[1600] (FIPS 202) on several states at once. W holds one 64-bit word of each state and offers xor, chi(a, b,
/// c) = a ^ (~b & c), rotation by a constant, and spread(x) = x in every state.
template <class W>
class KeccakLanes
{
public:
    void permute() noexcept
    {
        for (const std::uint64_t constant : RoundConstants) {
            theta(Five());
            rhoAndPi(All());
            chi(All());
            m_words[0] = m_words[0] ^ W::spread(constant);
        }
    }

    W& operator[](std::size_t word) noexcept { return m_words[word]; }

private:
    using Five = std::make_index_sequence<5>;
    using All = std::make_index_sequence<25>;

    // Word x + 5y goes to y + 5((2x + 3y) mod 5), turned by so many bits.
    static constexpr std::size_t Target(std::size_t i) { return i / 5 + 5 * ((2 * (i % 5) + 3 * (i / 5)) % 5); }
    static constexpr int Turns[25] = {0,  1,  62, 28, 27, 36, 44, 6,  55, 20, 3,  10, 43,
                                      25, 39, 41, 45, 15, 21, 8,  18, 2,  61, 56, 14};
    static constexpr std::uint64_t RoundConstants[24] = {
        0x0000000000000001, 0x0000000000008082, 0x800000000000808a, 0x8000000080008000, 0x000000000000808b,
        0x0000000080000001, 0x8000000080008081, 0x8000000000008009, 0x000000000000008a, 0x0000000000000088,
        0x0000000080008009, 0x000000008000000a, 0x000000008000808b, 0x800000000000008b, 0x8000000000008089,
        0x8000000000008003, 0x8000000000008002, 0x8000000000000080, 0x000000000000800a, 0x800000008000000a,
        0x8000000080008081, 0x8000000000008080, 0x0000000080000001, 0x8000000080008008};

    template <std::size_t... X>
    void theta(std::index_sequence<X...>) noexcept
    {
        W* const a = m_words;
        const W column[5] = {(a[X] ^ a[X + 5] ^ a[X + 10] ^ a[X + 15] ^ a[X + 20])...};
        ((m_parity[X] = column[(X + 4) % 5] ^ column[(X + 1) % 5].template turned<1>()), ...);
    }

    template <std::size_t... I>
    void rhoAndPi(std::index_sequence<I...>) noexcept
    {
        ((m_turned[Target(I)] = (m_words[I] ^ m_parity[I % 5]).template turned<Turns[I]>()), ...);
    }

    template <std::size_t... I>
    void chi(std::index_sequence<I...>) noexcept
    {
        ((m_words[I] = W::chi(m_turned[I], m_turned[I / 5 * 5 + (I + 1) % 5], m_turned[I / 5 * 5 + (I + 2) % 5])), ...);
    }

    W m_words[25];
    W m_parity[5];
    W m_turned[25];
};

/// Absorbs blocks of 17 words into each of W::Lanes states, and permutes after each. State l is kept at words[25 l
/// ...], its blocks begin at bytes[l].
template <class W>
void AbsorbBlocks(std::uint64_t* words, const char* const* bytes, std::size_t blocks) noexcept
{
    constexpr std::size_t blockWords = 17;
    KeccakLanes<W> state;
    for (std::size_t i = 0; i < 25; ++i)
        state[i] = W::gather(words + i);
    for (std::size_t block = 0; block < blocks; ++block) {
        for (std::size_t i = 0; i < blockWords; ++i)
            state[i] = state[i] ^ W::load(bytes, 8 * (blockWords * block + i));
        state.permute();
    }
    for (std::size_t i = 0; i < 25; ++i)
        state[i].scatter(words + i);
}

} // namespace
