#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <locale>
#include <type_traits>

/// @cond INTERNAL
class VoComparableString;

namespace vo::detail {

// Strings, views and what clients derive from them.
template <typename T>
inline constexpr bool IsComparableString = std::is_base_of_v<VoComparableString, T>;

// Comparison operators are found for strings only and deduce both operands exactly. Otherwise the conversion of strings
// to a pointer lets the built-in comparison of addresses win, and compilers that turn a comparison round, as C++20 lets
// them, find two equally good ones.
template <typename A, typename B = A>
using IfComparableStrings = std::enable_if_t<IsComparableString<A> && IsComparableString<B>, bool>;

template <typename A, typename T>
using IfStringAndNumber = std::enable_if_t<IsComparableString<A> && std::is_arithmetic_v<T>, bool>;

} // namespace vo::detail
/// @endcond

/// Comparison, searching and splitting shared by VoString and VoStringView.
///
/// **Case is ignored unless asked otherwise**: every operator and every search that takes no Comparison compares
/// case-insensitively. Only VoCaseSensitiveString and the members that are given a Comparison differ.
///
/// Case is folded byte by byte through the `std::ctype<char>` facet of the left operand's locale. In the classic locale
/// only `A`-`Z` have a lower case; the bytes of other UTF-8 characters are compared as they are. Bytes compare as
/// signed characters, so those from 0x80 on come before all ASCII ones.
///
/// A null `const char*` is read as the empty text everywhere.
///
/// Objects may be read from several threads at once.
class VOCORE_EXPORT VoComparableString
{
public:
    /// How bytes are compared. compare() reads every other value as CaseInsensitive, find() finds nothing with one.
    enum Comparison : std::int32_t
    {
        CaseInsensitive = 0, ///< after lower-casing with the left operand's locale
        CaseSensitive = 1    ///< exactly
    };

    /// Returned by the searches that find nothing.
    static constexpr std::size_t invalid_position = static_cast<std::size_t>(-1);

    virtual ~VoComparableString();

    /// The difference (this minus other) of the first two bytes that differ, not reduced to its sign. When one text is
    /// the beginning of the other the shorter one is less (-1, 1); equal texts give 0.
    virtual int compare(const VoComparableString& other, Comparison mode = CaseInsensitive) const;

    /// @name Comparison operators
    /// Case-insensitive, by compare(). The left operand's class and locale decide.
    /// @{
    virtual bool operator==(const char* text) const;                ///< Equal to a terminated text.
    virtual bool operator==(const VoComparableString& other) const; ///< Equal.
    virtual bool operator!=(const char* text) const;                ///< Not equal to a terminated text.
    virtual bool operator!=(const VoComparableString& other) const; ///< Not equal.
    virtual bool operator<(const VoComparableString& other) const;  ///< Ordered before.
    virtual bool operator<=(const VoComparableString& other) const; ///< Ordered before, or equal.
    virtual bool operator>(const VoComparableString& other) const;  ///< Ordered after.
    virtual bool operator>=(const VoComparableString& other) const; ///< Ordered after, or equal.

    // For left operands that are known as this class only: the right operand's own operators would compete in C++20.
    bool operator==(const VoString& other) const;              ///< Equal.
    bool operator==(const VoStringView& other) const;          ///< Equal.
    bool operator==(const VoCaseSensitiveString& other) const; ///< Equal.
    bool operator!=(const VoString& other) const;              ///< Not equal.
    bool operator!=(const VoStringView& other) const;          ///< Not equal.
    bool operator!=(const VoCaseSensitiveString& other) const; ///< Not equal.

    /// Equal.
    template <typename A, typename B>
    friend auto operator==(const A& a, const B& b) -> vo::detail::IfComparableStrings<A, B>
    {
        return a.operator==(static_cast<const VoComparableString&>(b));
    }
    /// Not equal.
    template <typename A, typename B>
    friend auto operator!=(const A& a, const B& b) -> vo::detail::IfComparableStrings<A, B>
    {
        return a.operator!=(static_cast<const VoComparableString&>(b));
    }
    /// Ordered before.
    template <typename A, typename B>
    friend auto operator<(const A& a, const B& b) -> vo::detail::IfComparableStrings<A, B>
    {
        return a.operator<(static_cast<const VoComparableString&>(b));
    }
    /// Ordered before, or equal.
    template <typename A, typename B>
    friend auto operator<=(const A& a, const B& b) -> vo::detail::IfComparableStrings<A, B>
    {
        return a.operator<=(static_cast<const VoComparableString&>(b));
    }
    /// Ordered after.
    template <typename A, typename B>
    friend auto operator>(const A& a, const B& b) -> vo::detail::IfComparableStrings<A, B>
    {
        return a.operator>(static_cast<const VoComparableString&>(b));
    }
    /// Ordered after, or equal.
    template <typename A, typename B>
    friend auto operator>=(const A& a, const B& b) -> vo::detail::IfComparableStrings<A, B>
    {
        return a.operator>=(static_cast<const VoComparableString&>(b));
    }
    /// @}

    /// @name Comparison with terminated texts
    /// On either side; the string operand decides how case counts: `text < string` is `string > text`.
    /// @{
    /// Equal.
    template <typename A>
    friend auto operator==(const A& a, const char* text) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).operator==(text);
    }
    /// Equal.
    template <typename A>
    friend auto operator==(const char* text, const A& a) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).operator==(text);
    }
    /// Not equal.
    template <typename A>
    friend auto operator!=(const A& a, const char* text) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).operator!=(text);
    }
    /// Not equal.
    template <typename A>
    friend auto operator!=(const char* text, const A& a) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).operator!=(text);
    }
    /// Ordered before.
    template <typename A>
    friend auto operator<(const A& a, const char* text) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isBefore(text);
    }
    /// Ordered before.
    template <typename A>
    friend auto operator<(const char* text, const A& a) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isAfter(text);
    }
    /// Ordered before, or equal.
    template <typename A>
    friend auto operator<=(const A& a, const char* text) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isNotAfter(text);
    }
    /// Ordered before, or equal.
    template <typename A>
    friend auto operator<=(const char* text, const A& a) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isNotBefore(text);
    }
    /// Ordered after.
    template <typename A>
    friend auto operator>(const A& a, const char* text) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isAfter(text);
    }
    /// Ordered after.
    template <typename A>
    friend auto operator>(const char* text, const A& a) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isBefore(text);
    }
    /// Ordered after, or equal.
    template <typename A>
    friend auto operator>=(const A& a, const char* text) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isNotBefore(text);
    }
    /// Ordered after, or equal.
    template <typename A>
    friend auto operator>=(const char* text, const A& a) -> vo::detail::IfComparableStrings<A>
    {
        return static_cast<const VoComparableString&>(a).isNotAfter(text);
    }
    /// @}

    /// @cond INTERNAL
    // A literal 0 would be taken for a null text.
    template <typename A, typename T>
    friend auto operator==(const A&, T) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator==(T, const A&) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator!=(const A&, T) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator!=(T, const A&) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator<(const A&, T) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator<(T, const A&) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator<=(const A&, T) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator<=(T, const A&) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator>(const A&, T) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator>(T, const A&) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator>=(const A&, T) -> vo::detail::IfStringAndNumber<A, T> = delete;
    template <typename A, typename T>
    friend auto operator>=(T, const A&) -> vo::detail::IfStringAndNumber<A, T> = delete;
    /// @endcond

    /// Whether the text without surrounding white space is wholly a number as C `strtod` reads it in the "C" locale:
    /// "1e3", "nan", "inf" and "0x1p3" are, "1e3x" and the empty text are not.
    virtual bool isDouble() const;

    /// Whether the text without surrounding white space is an `int` in canonical decimal form: "42" and "-7" are,
    /// "007", "+5", "1.0" and the empty text are not.
    virtual bool isInteger() const;

    /// The byte at an index.
    /// @throws VoIndexOutOfBoundsException with the index and the size, when index >= size()
    virtual const char& at(std::size_t index) const = 0;

    /// The byte at an index, unchecked. The bytes are contiguous: `&s[0]` reaches all size() of them.
    virtual const char& operator[](std::size_t index) const = 0;

    /// The locale that classifies and folds the bytes, captured when the string was made.
    virtual const std::locale& locale() const = 0;

    /// Number of bytes.
    virtual std::size_t size() const = 0;

    /// A view of the min(length, size() - pos) bytes from `pos`.
    /// @throws VoIndexOutOfBoundsException with pos and the size, when pos > size()
    virtual VoStringView substring(std::size_t pos, std::size_t length) const& = 0;

    /// compare() with a terminated text.
    int compare(const char* text, Comparison mode = CaseInsensitive) const;

    /// @name Search
    /// The byte index of the first match at or after `from` (default 0), or `invalid_position`. Case-insensitive unless
    /// a mode is given. An empty needle and a start at or beyond the end find nothing.
    /// @{
    std::size_t find(const VoComparableString& needle) const;                   ///< From the start.
    std::size_t find(const VoComparableString& needle, Comparison mode) const;  ///< From the start.
    std::size_t find(const VoComparableString& needle, std::size_t from) const; ///< At or after `from`.
    std::size_t find(const VoComparableString& needle, std::size_t from,
                     Comparison mode) const;                                       ///< At or after `from`.
    std::size_t find(const char* needle) const;                                    ///< A terminated text.
    std::size_t find(const char* needle, Comparison mode) const;                   ///< A terminated text.
    std::size_t find(const char* needle, std::size_t from) const;                  ///< A terminated text.
    std::size_t find(const char* needle, std::size_t from, Comparison mode) const; ///< A terminated text.
    std::size_t find(char needle) const;                                           ///< One byte.
    std::size_t find(char needle, Comparison mode) const;                          ///< One byte.
    std::size_t find(char needle, std::size_t from) const;                         ///< One byte.
    std::size_t find(char needle, std::size_t from, Comparison mode) const;        ///< One byte.
    /// @}

    /// @name Beginning and end
    /// Case-insensitive unless a mode is given (see compare() for other values). Every text starts and ends with the
    /// empty text.
    /// @{
    bool startsWith(const VoComparableString& prefix) const;                  ///< Case-insensitive.
    bool startsWith(const VoComparableString& prefix, Comparison mode) const; ///< Under the mode.
    bool startsWith(const char* prefix) const;                                ///< Case-insensitive.
    bool startsWith(const char* prefix, Comparison mode) const;               ///< Under the mode.
    bool endsWith(const VoComparableString& suffix) const;                    ///< Case-insensitive.
    bool endsWith(const VoComparableString& suffix, Comparison mode) const;   ///< Under the mode.
    bool endsWith(const char* suffix) const;                                  ///< Case-insensitive.
    bool endsWith(const char* suffix, Comparison mode) const;                 ///< Under the mode.
    /// @}

    /// A view without the leading and trailing bytes that the own locale classes as space or blank. (A temporary
    /// VoString gives a VoString, here and for the pieces below.)
    VoStringView trimmed() const;

    /// @name Splitting
    /// The pieces between the separators, as views of this text: adjacent separators give an empty piece, so do a
    /// leading and a trailing one. Separators are taken from the left and do not overlap. A text without the separator,
    /// and any text when the separator is empty, is its own single piece.
    /// @{
    VoDeque<VoStringView> tokenize(const VoString& separator) const;                  ///< Case-insensitive.
    VoDeque<VoStringView> tokenize(const VoString& separator, Comparison mode) const; ///< Under the mode.
    /// @}

    /// Writes all size() bytes, zero bytes included; honours the stream's width.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoComparableString& string);

protected:
    VoComparableString() = default;
    VoComparableString(const VoComparableString&) = default;            ///< For derived classes.
    VoComparableString& operator=(const VoComparableString&) = default; ///< For derived classes.

    /// First case-insensitive match of the `length` > 0 bytes at `needle`, at or after `from` < size().
    virtual std::size_t find_case_insensitive(const char* needle, std::size_t length, std::size_t from) const = 0;
    /// First exact match of the `length` > 0 bytes at `needle`, at or after `from` < size().
    virtual std::size_t find_case_sensitive(const char* needle, std::size_t length, std::size_t from) const = 0;

private:
    bool isBefore(const char* text) const;
    bool isNotAfter(const char* text) const;
    bool isAfter(const char* text) const;
    bool isNotBefore(const char* text) const;
    std::size_t findBytes(const char* needle, std::size_t length, std::size_t from, Comparison mode) const;
};
