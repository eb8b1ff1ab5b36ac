#pragma once

#include <Core/VoCaseSensitiveString.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <utility>

/// An identifier, held as text. Two identifiers are the same when their texts are equal byte for byte: case counts.
/// Any text is accepted, also the empty one; checking it is the caller's affair.
class VOCORE_EXPORT VoUUID
{
public:
    /// How a new identifier is written.
    enum Format : std::int32_t
    {
        WithoutBraces = 0 ///< "f81d4fae-7dec-11d0-a765-00a0c91e6bf6": fit for file names and URLs
    };

    /// A new identifier, in the form the host's generator gives: in braces.
    VoUUID();
    /// A new identifier without braces. Every value of the format means that.
    explicit VoUUID(Format format);
    /// The identifier with the given text.
    /// @{
    VoUUID(const VoString& text);
    VoUUID(const YString& text);
    VoUUID(const char* text);
    /// @}
    /// Copies and moves as a value; a moved-from one has an empty text.
    /// @{
    VoUUID(const VoUUID& other);
    VoUUID(VoUUID&& other) noexcept;
    VoUUID& operator=(const VoUUID& other);
    VoUUID& operator=(VoUUID&& other) noexcept;
    /// @}
    virtual ~VoUUID();

    /// The text.
    /// @{
    const VoString& toString() const& noexcept { return m_text; }
    VoString toString() && noexcept { return std::move(m_text); }
    operator const VoString&() const noexcept { return m_text; }
    operator YString() const;
    /// @}

    /// Comparison of the texts, byte for byte.
    /// @{
    bool operator==(const VoUUID& other) const;
    bool operator!=(const VoUUID& other) const;
    bool operator<(const VoUUID& other) const;
    friend bool operator==(const VoUUID& left, const char* right) { return left.m_text == right; }
    friend bool operator!=(const VoUUID& left, const char* right) { return left.m_text != right; }
    friend bool operator==(const char* left, const VoUUID& right) { return right.m_text == left; }
    friend bool operator!=(const char* left, const VoUUID& right) { return right.m_text != left; }
    // Strings and views are deduced exactly: an identifier converts to a string, whose own operators would compete.
    template <typename S>
    friend auto operator==(const VoUUID& left, const S& right) -> vo::detail::IfComparableStrings<S>
    {
        return left.m_text == right;
    }
    template <typename S>
    friend auto operator==(const S& left, const VoUUID& right) -> vo::detail::IfComparableStrings<S>
    {
        return right.m_text == left;
    }
    template <typename S>
    friend auto operator!=(const VoUUID& left, const S& right) -> vo::detail::IfComparableStrings<S>
    {
        return left.m_text != right;
    }
    template <typename S>
    friend auto operator!=(const S& left, const VoUUID& right) -> vo::detail::IfComparableStrings<S>
    {
        return right.m_text != left;
    }
    /// @}

    /// The text, and the identifier of a text.
    /// @{
    static VoString Serialize(const VoUUID& uuid);
    static VoUUID Deserialize(const VoString& text);
    /// @}

    /// Writes the text.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoUUID& uuid);

private:
    VoCaseSensitiveString m_text;
};

/// Hash of the exact text.
template <>
struct VOCORE_EXPORT std::hash<VoUUID>
{
    /// The hash of the bytes.
    std::size_t operator()(const VoUUID& uuid) const noexcept;
};
