#pragma once

#include <Core/VoException.h>
#include <Core/VoPair.h>
#include <Core/VoString.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

/// @cond INTERNAL
namespace vo::detail {

// Unsigned types that would be ambiguous between the signed and the unsigned number.
template <typename T>
inline constexpr bool IsWideUnsigned = std::is_integral_v<T>&& std::is_unsigned_v<T> &&
                                       (sizeof(T) >= sizeof(unsigned)) && !std::is_same_v<T, std::size_t> &&
                                       !IsWideCharacter<T>;

// Texts that convert both to a string and to a path.
template <typename T>
inline constexpr bool IsVariantText = std::is_same_v<T, QString> || std::is_same_v<T, std::string> ||
                                      std::is_same_v<T, VoStringView> || std::is_same_v<T, VoUUID>;

} // namespace vo::detail
/// @endcond

/// A value of one of eight kinds, or nothing (Null).
///
///     VoVariant width = 3;            // Integer
///     width.asInteger();              // 3
///     width.asDouble();               // throws VoBadVariantAccessException: kinds are never converted
///
/// The kind follows from the argument's type: literals of texts become String, unsigned numbers Size. What has no kind
/// of its own (`long`, `long long`, single characters, pointers) does not compile.
///
/// A value: copies copy, a moved-from variant is Null, a failed assignment changes nothing. Not synchronised.
class VOCORE_EXPORT VoVariant
{
public:
    /// The kinds. The numbers order values of different kinds (see compare()) and are stored in documents.
    enum Type : std::int32_t
    {
        Null = 0,         ///< nothing
        Boolean = 1,      ///< `bool`
        FilePath = 2,     ///< VoFilePath
        FilePathPair = 3, ///< two VoFilePath
        Integer = 4,      ///< 32-bit `int`
        Double = 5,       ///< `double`
        Size = 6,         ///< 64-bit unsigned size
        String = 7,       ///< VoString
        StringPair = 8    ///< two VoString
    };

    VoVariant() noexcept; ///< Null.
    /// @name A value of the argument's kind
    /// @{
    VoVariant(bool value);                              ///< Boolean.
    VoVariant(int value);                               ///< Integer.
    VoVariant(double value);                            ///< Double.
    VoVariant(std::size_t value);                       ///< Size.
    VoVariant(const VoString& value);                   ///< String.
    VoVariant(VoString&& value);                        ///< String.
    VoVariant(const char* value);                       ///< String; null is the empty text.
    VoVariant(const VoFilePath& value);                 ///< FilePath.
    VoVariant(VoFilePath&& value);                      ///< FilePath.
    VoVariant(const VoPair<VoString, VoString>& value); ///< StringPair.
    VoVariant(VoPair<VoString, VoString>&& value);      ///< StringPair.
    /// FilePathPair. A template, so that the overloads can be weighed without the definition of a path.
    template <typename T, std::enable_if_t<std::is_same_v<T, VoFilePath>, int> = 0>
    VoVariant(const VoPair<T, T>& value)
        : VoVariant(PathPairTag(), value)
    {
    }
    /// FilePathPair.
    template <typename T, std::enable_if_t<std::is_same_v<T, VoFilePath>, int> = 0>
    VoVariant(VoPair<T, T>&& value)
        : VoVariant(PathPairTag(), std::move(value))
    {
    }
    /// Size, of any other unsigned type of 32 bits or more.
    template <typename T, std::enable_if_t<vo::detail::IsWideUnsigned<T> && !std::is_same_v<T, bool>, int> = 0>
    VoVariant(T value)
        : VoVariant(static_cast<std::size_t>(value))
    {
    }
    /// String, of the other kinds of text.
    template <typename T, std::enable_if_t<vo::detail::IsVariantText<T>, int> = 0>
    VoVariant(const T& value)
        : VoVariant(VoString(value))
    {
    }
    template <typename T, std::enable_if_t<std::is_same_v<T, char> || vo::detail::IsWideCharacter<T>, int> = 0>
    VoVariant(T) = delete;
    VoVariant(long) = delete;
    VoVariant(long long) = delete;
    VoVariant(std::nullptr_t) = delete;
    template <typename T, std::enable_if_t<!std::is_same_v<std::remove_cv_t<T>, char>, int> = 0>
    VoVariant(T*) = delete;
    /// @}

    VoVariant(const VoVariant& other);                ///< Copies the value.
    VoVariant(VoVariant&& other) noexcept;            ///< `other` becomes Null.
    VoVariant& operator=(const VoVariant& other);     ///< Copies kind and value.
    VoVariant& operator=(VoVariant&& other) noexcept; ///< Takes kind and value; `other` becomes Null.
    virtual ~VoVariant();

    /// Replaces kind and value by what a constructor makes of the argument; also by another variant, copied or moved.
    template <typename T>
    void set(T&& value)
    {
        *this = VoVariant(std::forward<T>(value));
    }
    void swap(VoVariant& other) noexcept; ///< Exchanges kinds and values.

    Type type() const noexcept { return m_type; }                 ///< The kind.
    bool isNull() const noexcept { return m_type == Type::Null; } ///< Whether the variant holds nothing.

    /// @name The value
    /// References stay valid until the variant is changed, moved from or destroyed. A temporary gives its value
    /// instead.
    /// @throws VoBadVariantAccessException when the variant is of another kind
    /// @throws std::bad_variant_access "bad variant access", when the value was lost in a failed assignment
    /// @{
    bool asBoolean() const;                                        ///< Of a Boolean.
    int asInteger() const;                                         ///< Of an Integer.
    const double& asDouble() const&;                               ///< Of a Double.
    double asDouble() &&;                                          ///< Of a Double.
    std::size_t asSize() const;                                    ///< Of a Size.
    const VoString& asString() const&;                             ///< Of a String.
    VoString asString() &&;                                        ///< Of a String.
    const VoFilePath& asFilePath() const&;                         ///< Of a FilePath.
    VoFilePath asFilePath() &&;                                    ///< Of a FilePath.
    const VoPair<VoString, VoString>& asStringPair() const&;       ///< Of a StringPair.
    VoPair<VoString, VoString> asStringPair() &&;                  ///< Of a StringPair.
    const VoPair<VoFilePath, VoFilePath>& asFilePathPair() const&; ///< Of a FilePathPair.
    VoPair<VoFilePath, VoFilePath> asFilePathPair() &&;            ///< Of a FilePathPair.
    /// @}

    /// The order of two values: of different kinds, this kind's number minus the other's (so 3 comes before 2.0, and
    /// Null before everything); of the same kind 0 when they are equal, -1 when this value is less, else 1. Texts and
    /// paths ignore case, pairs compare their first elements first. NaN is neither equal to nor less than any Double:
    /// the result is 1 both ways, so do not hand this order to std::sort where NaN can occur.
    int compare(const VoVariant& other) const;
    /// @name By compare()
    /// @{
    bool operator==(const VoVariant& other) const { return compare(other) == 0; } ///< Equal.
    bool operator!=(const VoVariant& other) const { return compare(other) != 0; } ///< Not equal.
    bool operator<(const VoVariant& other) const { return compare(other) < 0; }   ///< Ordered before.
    /// @}

    /// The value as a text for people: "null", "true", "3", "2.5" (six significant digits), the text, the path, or the
    /// pair as "[first,second]". Not meant to be read back.
    VoString toString() const;

    /// The name of a kind, as "Integer"; "Unknown" for a number that is none.
    static const char* TypeString(Type type);
    /// The kind of a name, compared without regard to case; Null for any other text.
    static Type StringType(const VoString& text);

    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoVariant& value);

private:
    friend struct std::hash<VoVariant>;
    struct Private;
    struct PathPairTag
    {
    };

    VoVariant(PathPairTag, const VoPair<VoFilePath, VoFilePath>& value);
    VoVariant(PathPairTag, VoPair<VoFilePath, VoFilePath>&& value);
    VoVariant(Type type, std::unique_ptr<Private> state) noexcept;
    template <Type type>
    const auto& held() const;
    template <Type type>
    auto taken();
    template <Type type, typename T>
    static std::unique_ptr<Private> Holding(T&& value);

    Type m_type = Type::Null;
    std::unique_ptr<Private> m_private; // null in a Null variant
};

/// Agrees with ==: texts and paths hash without regard to case.
template <>
struct VOCORE_EXPORT std::hash<VoVariant>
{
    /// Of kind and value.
    std::size_t operator()(const VoVariant& value) const noexcept;
};

/// A variant read as a kind that it is not.
class VOCORE_EXPORT VoBadVariantAccessException : public VoException
{
    VOCORE_EXCEPTION_CLASS(VoBadVariantAccessException)
public:
    /// "Bad variant access [requested = " + name + "] [actual = " + name + "]"
    VoBadVariantAccessException(VoVariant::Type requested, VoVariant::Type actual);
};
