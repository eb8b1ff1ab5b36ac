#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <memory>
#include <type_traits>

/// A number of bytes that may be unknown; unknown is held as -1.
///
/// Sums and differences with an unknown size are unknown, and stop at the largest number that can be held.
class VOCORE_EXPORT VoDownloadSize
{
public:
    VoDownloadSize() noexcept; ///< No bytes.

    /// `bytes` bytes; a number beyond 64 signed bits is the largest one.
    template <typename Integer,
              typename = std::enable_if_t<std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>>>
    VoDownloadSize(Integer bytes)
        : VoDownloadSize(Count{clamped(bytes)})
    {
    }

    VoDownloadSize(const VoDownloadSize& other);                ///< The same size.
    VoDownloadSize(VoDownloadSize&& other) noexcept;            ///< `other` is 0 afterwards.
    VoDownloadSize& operator=(const VoDownloadSize& other);     ///< The same size.
    VoDownloadSize& operator=(VoDownloadSize&& other) noexcept; ///< `other` is 0 afterwards.
    ~VoDownloadSize();

    static VoDownloadSize Unknown();     ///< The unknown size.
    bool isUnknown() const noexcept;     ///< Whether the size is unknown.
    std::int64_t bytes() const noexcept; ///< The number of bytes; -1 when unknown.

    operator std::int64_t() const noexcept; ///< As bytes().
    operator VoString() const;              ///< As toString().

    VoDownloadSize& operator+=(const VoDownloadSize& other); ///< Becomes Sum() of both.

    /// @name Arithmetic with an unknown result where either size is unknown
    /// See also the operators `+` and `-`.
    /// @{
    static VoDownloadSize Sum(const VoDownloadSize& a, const VoDownloadSize& b); ///< The bytes of both.
    static VoDownloadSize Difference(const VoDownloadSize& a,
                                     const VoDownloadSize& b); ///< The bytes of `a` without those of `b`.
    /// @}

    /// For people, with one decimal and decimal units: "999.0 B", "1.5 KB". The unit follows from the count, not from
    /// the rounded text: 999999 bytes are "1000.0 KB". Unknown is "-1.0 B".
    VoString toString() const;

    /// The number of bytes in decimal, "-1" when unknown.
    static VoString Serialize(const VoDownloadSize& size);

    /// Reverses Serialize().
    /// @throws VoInvalidConversionException (text, "VoDownloadSize") unless the whole text is a decimal number that
    /// fits
    static VoDownloadSize Deserialize(const VoString& text);

private:
    struct Private;
    struct Count
    {
        std::int64_t value;
    };

    template <typename Integer>
    static constexpr std::int64_t clamped(Integer bytes) noexcept
    {
        if constexpr (std::is_unsigned_v<Integer> && sizeof(Integer) >= sizeof(std::int64_t))
            return bytes > static_cast<Integer>(std::numeric_limits<std::int64_t>::max())
                       ? std::numeric_limits<std::int64_t>::max()
                       : static_cast<std::int64_t>(bytes);
        else
            return static_cast<std::int64_t>(bytes);
    }

    explicit VoDownloadSize(Count count);

    std::unique_ptr<Private> m_private;
};

/// @cond INTERNAL
namespace vo::detail {

// Two sizes, or a size and an integer. The operators deduce their operands exactly: with parameters that convert they
// would compete with the built-in ones, because a size converts to an integer too.
template <typename A, typename B>
inline constexpr bool AreDownloadSizes = (std::is_same_v<A, VoDownloadSize> &&
                                          (std::is_same_v<B, VoDownloadSize> || std::is_integral_v<B>)) ||
                                         (std::is_integral_v<A> && std::is_same_v<B, VoDownloadSize>);

} // namespace vo::detail
/// @endcond

/// @name Arithmetic of sizes, and of sizes and integers
/// @{
/// VoDownloadSize::Sum().
template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
VoDownloadSize operator+(const A& a, const B& b)
{
    return VoDownloadSize::Sum(a, b);
}

/// VoDownloadSize::Difference().
template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
VoDownloadSize operator-(const A& a, const B& b)
{
    return VoDownloadSize::Difference(a, b);
}
/// @}

/// @{ Compares sizes, and sizes and integers, by the numbers of bytes; an unknown size is -1.
template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
bool operator==(const A& a, const B& b)
{
    return VoDownloadSize(a).bytes() == VoDownloadSize(b).bytes();
}

template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
bool operator!=(const A& a, const B& b)
{
    return !(a == b);
}

template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
bool operator<(const A& a, const B& b)
{
    return VoDownloadSize(a).bytes() < VoDownloadSize(b).bytes();
}

template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
bool operator>(const A& a, const B& b)
{
    return b < a;
}

template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
bool operator<=(const A& a, const B& b)
{
    return !(b < a);
}

template <typename A, typename B, std::enable_if_t<vo::detail::AreDownloadSizes<A, B>, int> = 0>
bool operator>=(const A& a, const B& b)
{
    return !(a < b);
}
/// @}

/// @relates VoDownloadSize
/// `text` followed by the size's toString().
VOCORE_EXPORT VoString operator+(const char* text, const VoDownloadSize& size);

/// @relates VoDownloadSize
/// Writes toString().
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoDownloadSize& size);
