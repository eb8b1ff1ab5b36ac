#include <Core/detail/KeccakAbsorb.h>
#include <Core/detail/KeccakLanes.h>

#include <cstring>

#include <immintrin.h>

namespace {

struct FourWords
{
    __m256i bits;

    static FourWords spread(std::uint64_t word) { return {_mm256_set1_epi64x(static_cast<long long>(word))}; }
    static FourWords chi(FourWords a, FourWords b, FourWords c)
    {
        return {_mm256_xor_si256(a.bits, _mm256_andnot_si256(b.bits, c.bits))};
    }

    static long long word(const char* bytes)
    {
        long long value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    static FourWords load(const char* const* bytes, std::size_t offset)
    {
        return {_mm256_set_epi64x(word(bytes[3] + offset), word(bytes[2] + offset), word(bytes[1] + offset),
                                  word(bytes[0] + offset))};
    }
    static FourWords gather(const std::uint64_t* words)
    {
        return {_mm256_set_epi64x(static_cast<long long>(words[75]), static_cast<long long>(words[50]),
                                  static_cast<long long>(words[25]), static_cast<long long>(words[0]))};
    }
    void scatter(std::uint64_t* words) const
    {
        alignas(32) std::uint64_t lanes[4];
        _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), bits);
        for (std::size_t lane = 0; lane < 4; ++lane)
            words[25 * lane] = lanes[lane];
    }

    template <int Count>
    FourWords turned() const
    {
        return {_mm256_or_si256(_mm256_slli_epi64(bits, Count), _mm256_srli_epi64(bits, 64 - Count))};
    }
    friend FourWords operator^(FourWords a, FourWords b) { return {_mm256_xor_si256(a.bits, b.bits)}; }
};

} // namespace

void vo::detail::KeccakAbsorbAvx2(std::uint64_t* states, const char* const* bytes, std::size_t blocks)
{
    AbsorbBlocks<FourWords>(states, bytes, blocks);
}
