#pragma once

#include <Core/VoComparableString.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// @cond INTERNAL
namespace vo::detail {

struct LocaleRecord;

template <typename T>
inline constexpr bool IsWideCharacter = std::is_same_v<T, wchar_t> || std::is_same_v<T, char16_t> ||
#if defined(__cpp_char8_t)
                                        std::is_same_v<T, char8_t> ||
#endif
                                        std::is_same_v<T, char32_t>;

// Integer types that are read as numbers, not as characters or truth values.
template <typename T>
inline constexpr bool IsNumberInteger =
    std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> && !IsWideCharacter<T>;

template <typename T>
inline constexpr bool IsArithmeticButNotChar = std::is_arithmetic_v<T> && !std::is_same_v<T, char>;

template <typename T>
inline constexpr bool IsForeignString =
    std::is_same_v<T, QString> || std::is_same_v<T, std::string> || std::is_same_v<T, std::string_view>;

} // namespace vo::detail
/// @endcond

/// The string that crosses every interface of the library: any bytes, by convention UTF-8 text, with the locale that
/// classifies and folds them.
///
/// Comparisons and searches ignore case unless asked otherwise (see VoComparableString). All indices count bytes. The
/// bytes are not validated and may include zero bytes; the conversions to terminated texts and to QString end there.
///
/// The locale is the global locale at construction. Copies, and what is made by editing a copy (`+`, replaced(),
/// spacedCapitals()), keep the locale of the string they come from.
///
/// A value: it copies its bytes, is empty after being moved from, and may be read from several threads at once. Views
/// (VoStringView) of a string stay valid when it is moved, and end with its next change or its destruction; of a
/// temporary string the members that give views give strings instead.
class VOCORE_EXPORT VoString : public VoComparableString
{
public:
    using value_type = char;            ///< As algorithms and inserters of the standard library ask for it.
    using const_iterator = const char*; ///< See begin().

    /// The alphabet that Random() draws from. Values above 4 mean Alphanumeric.
    enum RandomType : std::int32_t
    {
        Alphanumeric = 0, ///< `a`-`z`, `A`-`Z`, `0`-`9`
        Digits = 1,       ///< `0`-`9`
        Lowercase = 2,    ///< `a`-`z`
        Uppercase = 3,    ///< `A`-`Z`
        Letters = 4       ///< `a`-`z`, `A`-`Z`
    };

    VoString();
    VoString(const char* text);                      ///< The bytes up to the terminator; null is empty.
    VoString(const char* bytes, std::size_t length); ///< `length` bytes, zero bytes included; null is empty.
#if defined(__cpp_char8_t)
    VoString(const char8_t* text) ///< The bytes of a UTF-8 literal, as earlier language versions give them.
        : VoString(reinterpret_cast<const char*>(text))
    {
    }
#endif
    VoString(const std::string& bytes);          ///< The same bytes.
    VoString(std::string&& bytes);               ///< The same bytes.
    VoString(char c, std::size_t count);         ///< `count` times c. Mind the order of the arguments.
    VoString(const QString& text);               ///< The UTF-8 form of the text.
    VoString(const QStringRef& text);            ///< The UTF-8 form of the text; where Qt is of version 5.
    VoString(const QStringView& text);           ///< The UTF-8 form of the text.
    VoString(const YString& text);               ///< The same bytes.
    VoString(const TempString& text);            ///< The same bytes.
    VoString(const VoStringView& view);          ///< A copy of the viewed bytes, with the global locale.
    explicit VoString(const VoUUID& uuid);       ///< The identifier's text.
    explicit VoString(int value);                ///< Decimal text.
    explicit VoString(long long value);          ///< Decimal text.
    explicit VoString(unsigned long long value); ///< Decimal text.
    explicit VoString(double value);             ///< Like C "%f": always six decimals, "1.500000", whatever the locale.
    explicit VoString(bool) = delete;

    /// One byte. Deduces char exactly, so that no number becomes a character by accident.
    template <typename C, std::enable_if_t<std::is_same_v<C, char>, int> = 0>
    VoString(C c)
        : VoString(c, 1)
    {
    }

    /// A copy of the viewed bytes, zero bytes included. Deduces the type exactly, so that it competes with none of the
    /// other texts.
    template <typename V, std::enable_if_t<std::is_same_v<V, std::string_view>, int> = 0>
    explicit VoString(V view)
        : VoString(view.data(), view.size())
    {
    }

    /// Decimal text of any other integer type.
    template <typename T, std::enable_if_t<vo::detail::IsNumberInteger<T>, int> = 0>
    explicit VoString(T value)
        : VoString(static_cast<std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>(value))
    {
    }

    template <typename T, std::enable_if_t<vo::detail::IsWideCharacter<T>, int> = 0>
    VoString(T) = delete;

    VoString(const VoString& other);     ///< The same bytes and locale.
    VoString(VoString&& other) noexcept; ///< `other` becomes empty.
    ~VoString() override;

    VoString& operator=(const VoString& other);     ///< Takes the bytes and the locale.
    VoString& operator=(VoString&& other) noexcept; ///< Takes bytes and locale; `other` becomes empty.
    VoString& operator=(const char* text);          ///< Takes the bytes, keeps the own locale.
    template <typename T, std::enable_if_t<vo::detail::IsArithmeticButNotChar<T>, int> = 0>
    VoString& operator=(T) = delete;

    void swap(VoString& other) noexcept; ///< Exchanges bytes and locales.

    /// @name Bytes
    /// @{
    std::size_t size() const final
    {
        return m_text->size();
    }
    bool isEmpty() const
    {
        return m_text->empty();
    } ///< Whether there is no byte.
    const char& at(std::size_t index) const final;
    /// The byte at an index, to be changed.
    /// @throws VoIndexOutOfBoundsException with the index and the size, when index >= size()
    char& at(std::size_t index);
    const char& operator[](std::size_t index) const final
    {
        return *(m_text->data() + index);
    }
    char& operator[](std::size_t index)
    {
        return *(m_text->data() + index);
    } ///< The byte at an index, unchecked.

    /// Any integer type as index, unchecked; without these the conversion to a pointer would compete.
    template <typename I, std::enable_if_t<std::is_integral_v<I>, int> = 0>
    const char& operator[](I index) const
    {
        return (*this)[static_cast<std::size_t>(index)];
    }
    /// Any integer type as index, unchecked.
    template <typename I, std::enable_if_t<std::is_integral_v<I>, int> = 0>
    char& operator[](I index)
    {
        return (*this)[static_cast<std::size_t>(index)];
    }

    const char* begin() const noexcept
    {
        return m_text->data();
    } ///< The first byte.
    const char* end() const noexcept
    {
        return m_text->data() + m_text->size();
    } ///< Past the last byte.
    char* begin() noexcept
    {
        return m_text->data();
    } ///< The first byte, to be changed.
    char* end() noexcept
    {
        return m_text->data() + m_text->size();
    } ///< Past the last byte.

    const char* cbegin() const noexcept
    {
        return begin();
    } ///< The first byte.
    const char* cend() const noexcept
    {
        return end();
    } ///< Past the last byte.

    const std::locale& locale() const final;

    // Overridden for speed only: the own bytes and the locale's record need no virtual call.
    int compare(const VoComparableString& other, Comparison mode = CaseInsensitive) const override;
    using VoComparableString::compare;
    bool operator==(const char* text) const override;
    bool operator==(const VoComparableString& other) const override;
    bool operator!=(const char* text) const override;
    bool operator!=(const VoComparableString& other) const override;

    VoStringView substring(std::size_t pos) const&; ///< The view from `pos` to the end; see the other form.
    VoStringView substring(std::size_t pos, std::size_t length) const& final;
    /// A temporary string's views would outlive it: it gives copies that own their bytes and keep its locale.
    /// @{
    VoString substring(std::size_t pos) const&&;
    VoString substring(std::size_t pos, std::size_t length) const&&;
    VoStringView trimmed() const&;
    VoString trimmed() const&&;
    VoDeque<VoStringView> tokenize(const VoString& separator) const&;
    VoDeque<VoStringView> tokenize(const VoString& separator, Comparison mode) const&;
    VoDeque<VoString> tokenize(const VoString& separator) const&&;
    VoDeque<VoString> tokenize(const VoString& separator, Comparison mode) const&&;
    /// @}

    /// Copies min(length, size() - pos) bytes from `pos` to `dest`, without a terminator, and returns how many.
    /// @throws VoIndexOutOfBoundsException with pos and the size, when pos > size()
    std::size_t copy(char* dest, std::size_t length, std::size_t pos) const;
    /// @}

    /// @name Changes in place
    /// The arguments may be this string itself or views of it.
    /// @{
    VoString& append(const VoString& text);         ///< Adds at the end.
    VoString& append(const VoStringView& text);     ///< Adds at the end.
    VoString& append(const char* text);             ///< Adds at the end.
    VoString& concat(const VoString& text);         ///< As append().
    VoString& operator+=(const VoString& text);     ///< As append().
    VoString& operator+=(const VoStringView& text); ///< As append().
    VoString& operator+=(const char* text);         ///< As append().
    /// Adds one byte.
    template <typename C, std::enable_if_t<std::is_same_v<C, char>, int> = 0>
    VoString& operator+=(C c)
    {
        return appendByte(c);
    }
    template <typename T, std::enable_if_t<vo::detail::IsArithmeticButNotChar<T>, int> = 0>
    VoString& operator+=(T) = delete;
    void push_back(char c)
    {
        appendByte(c);
    } ///< Adds one byte, as inserters do.

    void resize(std::size_t size, char fill); ///< Cuts the end, or grows with `fill`.

    /// Replaces every occurrence of `from`, left to right; what was put in is not searched again. `to` counts up to its
    /// first zero byte. An empty `from` replaces nothing. compare() says how other mode values are read.
    void replace(const VoString& from, const VoString& to, Comparison mode);

    void trim(); ///< Removes the leading and trailing bytes that the own locale classes as space or blank.

    /// Puts a blank before each upper-case byte that does not follow white space (both by the own locale) and is not
    /// the first: "HelloWorld" becomes "Hello World", "ABC" becomes "A B C".
    void spaceCapitals();
    /// @}

    /// @name Changed copies
    /// @{
    VoString operator+(const VoString& text) const&;     ///< Both texts, with this locale.
    VoString operator+(const VoString& text) &&;         ///< Both texts, with this locale.
    VoString operator+(const VoStringView& text) const&; ///< Both texts, with this locale.
    VoString operator+(const VoStringView& text) &&;     ///< Both texts, with this locale.
    VoString operator+(const char* text) const&;         ///< Both texts, with this locale.
    VoString operator+(const char* text) &&;             ///< Both texts, with this locale.
    /// Both texts, with the right operand's locale.
    friend VOCORE_EXPORT VoString operator+(const char* text, const VoString& string);

    VoString replaced(const VoString& from, const VoString& to) const; ///< Like replace(), case-insensitive.
    VoString replaced(const VoString& from, const VoString& to, Comparison mode) const; ///< Like replace().
    VoString spacedCapitals() const;                                                    ///< Like spaceCapitals().
    /// @}

    /// @name Questions
    /// @{
    bool equal(const VoString& other, Comparison mode) const;              ///< Equal under the mode (see compare()).
    bool equal(const VoStringView& other, Comparison mode) const;          ///< Equal under the mode (see compare()).
    bool equal(const char* other, Comparison mode) const;                  ///< Equal under the mode (see compare()).
    bool lessThan(const VoComparableString& other, Comparison mode) const; ///< Whether compare() is below zero.

    bool contains(const VoString& needle) const;                            ///< Case-insensitive find().
    bool contains(const VoString& needle, Comparison mode) const;           ///< find() under the mode.
    bool contains(const VoComparableString& needle) const;                  ///< Case-insensitive find().
    bool contains(const VoComparableString& needle, Comparison mode) const; ///< find() under the mode.
    bool contains(const char* needle) const;                                ///< Case-insensitive find().
    bool contains(const char* needle, Comparison mode) const;               ///< find() under the mode.

    /// The index of the last byte equal to c (exactly).
    /// @throws VoNotFoundException "Item not found: " + c, when there is none
    std::size_t findLastOf(char c) const;
    std::size_t findLastOf(char c, std::size_t from) const; ///< As findLastOf(), at or before the index `from`.

    bool containsWhiteSpace() const; ///< Whether the own locale classes any byte as space or blank.
    /// @}

    /// @name Conversions out
    /// The pointers are terminated, and valid until the string changes.
    /// @{
    const VoString& toString() const&
    {
        return *this;
    } ///< The string itself, as views and paths give theirs.
    VoString toString() &&
    {
        return std::move(*this);
    } ///< The string itself, out of a temporary.
    const std::string& toStdString() const
    {
        return *m_text;
    }                           ///< The held bytes.
    std::string& toStdString(); ///< The held bytes, to be changed.
    /// The held bytes, zero bytes included, as a view that ends with the string's next change. Not by conversion: it
    /// would compete with the one to a pointer.
    std::string_view toStdStringView() const& noexcept
    {
        return *m_text;
    }
    std::string_view toStdStringView() const&& = delete; ///< Would dangle.
    const char* c_str() const
    {
        return m_text->c_str();
    } ///< The bytes, terminated.
    const char* toCString() const
    {
        return m_text->c_str();
    } ///< The bytes, terminated.
    const char* tocs() const
    {
        return m_text->c_str();
    } ///< The bytes, terminated.
    operator const char*() const
    {
        return m_text->c_str();
    } ///< The bytes, terminated.
    explicit operator bool() const = delete;
    /// @cond INTERNAL
    // What the conversion to a pointer would let in by accident: a truth value, an address, dereferencing, `delete`,
    // and differences of addresses.
    operator void*() const = delete;
    void operator*() const = delete;
    template <typename T>
    void operator-(const T&) const = delete;
    friend void operator-(const char*, const VoString&) = delete;
    /// @endcond

    /// The text read as UTF-8 up to the first zero byte; invalid bytes become U+FFFD and a leading byte order mark is
    /// dropped.
    QString toQString() const;
    operator QString() const; ///< As toQString().

    /// All bytes read as UTF-8, as UTF-16 code units also where wchar_t is wider; invalid bytes become U+FFFD.
    std::wstring toWString() const;

    YString toYString() const;  ///< All bytes.
    operator YString() const;   ///< All bytes.
    operator PrintfArg() const; ///< Refers to these bytes: valid until the string changes.

    /// @brief The number that the text starts with, after white space, in the "C" locale; 0 when there is none.
    /// A number beyond `int` keeps its low bits. Test with isInteger() first where the text must be checked.
    int toInt() const;
    /// @brief The number that the text starts with, after white space, in the "C" locale; 0 when there is none.
    /// Test with isDouble() first where the text must be checked.
    double toDouble() const;
    /// The unsigned number that the text starts with, as a classic stream extracts it: 0 when there is none, the
    /// largest value when it does not fit, and a leading "-" wraps around.
    std::size_t toSizeT() const;

    /// The number that the whole text is: an optional "-" and digits, nothing before, between or behind them.
    /// @throws VoInvalidParameterException "Not a whole number of 64 bits: " and the text
    std::int64_t requireInteger() const;
    /// The number that the whole text is: an optional "-", decimal digits with an optional "." among them, an optional
    /// exponent, nothing before or behind. What is too small becomes 0.
    /// @throws VoInvalidParameterException "Not a finite number: " and the text, also for one that is too large
    double requireDouble() const;
    /// @}

    /// @name Making texts
    /// @{
    static VoString ToString(double value); ///< Like C "%g": "2.5", six significant digits, whatever the locale.
    static VoString Base64(double value);   ///< The exact bits of the value; see VoStringDoubleBase64Converter.
    static VoString NewLine();              ///< "\r\n" on every platform.
    /// The digits of |value|, padded with "0" to `width` digits, and "-" in front when negative: Pad(-5, 3) is "-005".
    static VoString Pad(int value, int width);
    static VoString Random(std::size_t length, RandomType type); ///< `length` independent, uniform characters.
    static VoString FromWString(const std::wstring& text);       ///< The UTF-8 form of UTF-16 code units.
    /// @}

    static bool IsLetter(char c);     ///< Only `a`-`z` and `A`-`Z`, whatever the locale.
    static bool IsWhiteSpace(char c); ///< Whether the global locale, now, classes c as space or blank.

protected:
    std::size_t find_case_insensitive(const char* needle, std::size_t length, std::size_t from) const override;
    std::size_t find_case_sensitive(const char* needle, std::size_t length, std::size_t from) const override;

private:
    friend class VoStringView;
    struct Private;

    // Null when empty and of the classic locale: default construction and moves then cost no allocation.
    std::unique_ptr<Private> m_private;
    // The bytes in m_private, or a shared empty text; never null.
    std::string* m_text;

    explicit VoString(std::unique_ptr<Private> state) noexcept;
    const vo::detail::LocaleRecord& record() const;
    // A new string of the bytes, with the locale of `source`.
    static VoString withLocaleOf(const VoString& source, std::string&& bytes);
    static VoString joined(const VoString& source, const char* a, std::size_t aLength, const char* b,
                           std::size_t bLength);
    // A copy of a view of this string.
    VoString owning(const VoStringView& view) const;
    VoString& appendByte(char c);
    VoString& appendBytes(const char* bytes, std::size_t length);
    Private& own();
};

/// Exchanges bytes and locales.
inline void swap(VoString& a, VoString& b) noexcept
{
    a.swap(b);
}

// Views complete the results of trimmed(), substring() and tokenize().
#include <Core/VoDeque.h>
#include <Core/VoStringView.h>

// Free operators deduce the foreign type exactly: with a converting parameter they would compete with each other and
// with the foreign type's own operators.

/// @cond INTERNAL
namespace vo::detail {

template <typename A, typename S>
using IfStringAndForeign =
    std::enable_if_t<std::conjunction_v<std::bool_constant<IsForeignString<S>>, std::is_base_of<VoComparableString, A>>,
                     bool>;

inline VoStringView TextOf(std::string_view text)
{
    return VoStringView(text.data(), text.size());
}
template <typename Q, std::enable_if_t<std::is_same_v<Q, QString>, int> = 0>
VoString TextOf(const Q& text)
{
    return VoString(text);
}

} // namespace vo::detail
/// @endcond

/// @name Comparison with QString, std::string and std::string_view
/// The library's string decides how case counts, on either side.
/// @{
/// Equal texts.
template <typename A, typename S>
auto operator==(const A& a, const S& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return a == vo::detail::TextOf(b);
}
/// Equal texts.
template <typename S, typename A>
auto operator==(const S& a, const A& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return b == vo::detail::TextOf(a);
}
/// Different texts.
template <typename A, typename S>
auto operator!=(const A& a, const S& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return a != vo::detail::TextOf(b);
}
/// Different texts.
template <typename S, typename A>
auto operator!=(const S& a, const A& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return b != vo::detail::TextOf(a);
}
/// Ordered before.
template <typename A, typename S>
auto operator<(const A& a, const S& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return a < vo::detail::TextOf(b);
}
/// Ordered before.
template <typename S, typename A>
auto operator<(const S& a, const A& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return b > vo::detail::TextOf(a);
}
/// Ordered before, or equal.
template <typename A, typename S>
auto operator<=(const A& a, const S& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return a <= vo::detail::TextOf(b);
}
/// Ordered before, or equal.
template <typename S, typename A>
auto operator<=(const S& a, const A& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return b >= vo::detail::TextOf(a);
}
/// Ordered after.
template <typename A, typename S>
auto operator>(const A& a, const S& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return a > vo::detail::TextOf(b);
}
/// Ordered after.
template <typename S, typename A>
auto operator>(const S& a, const A& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return b < vo::detail::TextOf(a);
}
/// Ordered after, or equal.
template <typename A, typename S>
auto operator>=(const A& a, const S& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return a >= vo::detail::TextOf(b);
}
/// Ordered after, or equal.
template <typename S, typename A>
auto operator>=(const S& a, const A& b) -> vo::detail::IfStringAndForeign<A, S>
{
    return b <= vo::detail::TextOf(a);
}
/// @}

/// @name Concatenation with QString and char
/// @{
/// Both texts, with the string's locale.
template <typename Q, std::enable_if_t<std::is_same_v<Q, QString>, int> = 0>
VoString operator+(const VoString& a, const Q& b)
{
    return a + VoString(b);
}
/// Both texts, with the string's locale.
template <typename Q, std::enable_if_t<std::is_same_v<Q, QString>, int> = 0>
VoString operator+(VoString&& a, const Q& b)
{
    return std::move(a) + VoString(b);
}
/// Both texts.
template <typename Q, std::enable_if_t<std::is_same_v<Q, QString>, int> = 0>
VoString operator+(const Q& a, const VoString& b)
{
    return VoString(a) + b;
}
/// The text and one byte.
template <typename C, std::enable_if_t<std::is_same_v<C, char>, int> = 0>
VoString operator+(const VoString& a, C b)
{
    return a + VoStringView(&b, 1);
}
/// The text and one byte.
template <typename C, std::enable_if_t<std::is_same_v<C, char>, int> = 0>
VoString operator+(VoString&& a, C b)
{
    a += b;
    return std::move(a);
}
/// One byte and the text.
template <typename C, std::enable_if_t<std::is_same_v<C, char>, int> = 0>
VoString operator+(C a, const VoString& b)
{
    return VoString(a) + b;
}
/// @}

/// @cond INTERNAL
template <typename T, std::enable_if_t<vo::detail::IsArithmeticButNotChar<T>, int> = 0>
void operator+(const VoString&, T) = delete;
template <typename T, std::enable_if_t<vo::detail::IsArithmeticButNotChar<T>, int> = 0>
void operator+(T, const VoString&) = delete;
/// @endcond

namespace std {

/// Agrees with the case-insensitive `==` among strings whose locales fold alike.
template <>
struct VOCORE_EXPORT hash<VoString>
{
    size_t operator()(const VoString& string) const noexcept; ///< Of the folded bytes.
};

} // namespace std
