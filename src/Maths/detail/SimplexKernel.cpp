#include <Maths/detail/SimplexKernel.h>

#include <cmath>
#include <cstdint>
#include <cstring>

// A compiler extension: the function is compiled for several instruction sets and the loader takes the best one. The
// sanitizers start too late for that choice. Without it the functions are the plain ones, with the same results.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__gnu_linux__) &&                       \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define VOCORE_PROCESSOR_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define VOCORE_PROCESSOR_CLONES
#endif

// Keeps the loops free of checks for overlap.
#if defined(__GNUC__) || defined(_MSC_VER)
#define VOCORE_RESTRICT __restrict
#else
#define VOCORE_RESTRICT
#endif

namespace vo::detail {
namespace {

std::uint64_t Bits(double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

constexpr std::uint64_t NegativeZero = std::uint64_t(1) << 63;

} // namespace

VOCORE_PROCESSOR_CLONES
RowContent DivideRow(double* cells, double divisor, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        cells[i] /= divisor;

    RowContent content;
    for (std::size_t i = 0; i < count; ++i)
        if (!std::isfinite(cells[i]))
            content.finite = false;
    content.negativeZero = HoldsNegativeZero(cells, count);
    return content;
}

VOCORE_PROCESSOR_CLONES
void SubtractScaledRow(double* VOCORE_RESTRICT target, const double* VOCORE_RESTRICT source, double factor,
                       std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] -= factor * source[i];
}

bool HoldsNegativeZero(const double* cells, std::size_t count)
{
    bool found = false;
    for (std::size_t i = 0; i < count; ++i)
        found |= Bits(cells[i]) == NegativeZero;
    return found;
}

} // namespace vo::detail
