#include <Core/detail/KeccakAbsorb.h>
#include <Core/detail/KeccakLanes.h>

#include <immintrin.h>

namespace {

struct EightWords
{
    __m512i bits;

    static EightWords spread(std::uint64_t word) { return {_mm512_set1_epi64(static_cast<long long>(word))}; }
    static EightWords chi(EightWords a, EightWords b, EightWords c)
    {
        return {_mm512_ternarylogic_epi64(a.bits, b.bits, c.bits, 0xd2)};
    }

    static EightWords load(const char* const* bytes, std::size_t offset)
    {
        const __m512i places = _mm512_loadu_si512(bytes);
        return {_mm512_i64gather_epi64(_mm512_add_epi64(places, _mm512_set1_epi64(static_cast<long long>(offset))),
                                       nullptr, 1)};
    }
    static __m512i statePlaces() { return _mm512_set_epi64(175, 150, 125, 100, 75, 50, 25, 0); }
    static EightWords gather(const std::uint64_t* words) { return {_mm512_i64gather_epi64(statePlaces(), words, 8)}; }
    void scatter(std::uint64_t* words) const { _mm512_i64scatter_epi64(words, statePlaces(), bits, 8); }

    template <int Count>
    EightWords turned() const
    {
        return {_mm512_rol_epi64(bits, Count)};
    }
    friend EightWords operator^(EightWords a, EightWords b) { return {_mm512_xor_si512(a.bits, b.bits)}; }
};

} // namespace

void vo::detail::KeccakAbsorbAvx512(std::uint64_t* states, const char* const* bytes, std::size_t blocks)
{
    AbsorbBlocks<EightWords>(states, bytes, blocks);
}
