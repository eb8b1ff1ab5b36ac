#pragma once

#include <iosfwd>
#include <type_traits>
#include <utility>

/// A plain pair of two values. Compares lexicographically and takes part in structured bindings.
template <typename A, typename B>
struct VoPair
{
    A first;  ///< The first element.
    B second; ///< The second element.

    /// Both elements value-initialised.
    VoPair()
        : first()
        , second()
    {
    }
    /// Takes over both elements.
    VoPair(A a, B b)
        : first(std::move(a))
        , second(std::move(b))
    {
    }
    /// The elements of a standard pair.
    VoPair(const std::pair<A, B>& other)
        : first(other.first)
        , second(other.second)
    {
    }
    /// @copydoc VoPair(const std::pair<A, B>&)
    VoPair(std::pair<A, B>&& other)
        : first(std::move(other.first))
        , second(std::move(other.second))
    {
    }

    /// The same elements as a standard pair.
    operator std::pair<A, B>() const { return {first, second}; }
};

/// Makes a pair of the decayed types of its arguments.
template <typename A, typename B>
VoPair<std::decay_t<A>, std::decay_t<B>> MakeVoPair(A&& a, B&& b)
{
    return {std::forward<A>(a), std::forward<B>(b)};
}

/// @name Comparisons, first element first
/// @{
/// Equal elements.
template <typename A, typename B>
bool operator==(const VoPair<A, B>& a, const VoPair<A, B>& b)
{
    return a.first == b.first && a.second == b.second;
}

/// Some element differs.
template <typename A, typename B>
bool operator!=(const VoPair<A, B>& a, const VoPair<A, B>& b)
{
    return !(a == b);
}

/// Ordered by the first elements, then by the second.
template <typename A, typename B>
bool operator<(const VoPair<A, B>& a, const VoPair<A, B>& b)
{
    if (a.first < b.first)
        return true;
    if (b.first < a.first)
        return false;
    return a.second < b.second;
}
/// @}

/// Writes "[first,second]", as VoVariant::toString() does. Only for elements that a stream can write.
template <typename Char, typename Traits, typename A, typename B>
auto operator<<(std::basic_ostream<Char, Traits>& stream, const VoPair<A, B>& pair)
    -> decltype(stream << pair.first, stream << pair.second, stream)
{
    return stream << '[' << pair.first << ',' << pair.second << ']';
}
