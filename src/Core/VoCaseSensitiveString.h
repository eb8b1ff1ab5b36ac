#pragma once

#include <Core/VoString.h>

/// A VoString whose `==`, `!=` and `<` count case, when it is the left operand.
///
/// Nothing else differs: `<=`, `>`, `>=`, compare() without a mode, the searches, replace() and tokenize() ignore case
/// as on any string, and files and records of the application are ordered by them. So "abc" and "ABC" are neither equal
/// nor is one not `<=` the other.
class VOCORE_EXPORT VoCaseSensitiveString : public VoString
{
public:
    VoCaseSensitiveString();
    VoCaseSensitiveString(const VoString& string); ///< A copy.
    VoCaseSensitiveString(VoString&& string);      ///< Takes the bytes.

    VoCaseSensitiveString(const VoCaseSensitiveString& other);     ///< A copy.
    VoCaseSensitiveString(VoCaseSensitiveString&& other) noexcept; ///< `other` becomes empty.
    ~VoCaseSensitiveString() override;
    VoCaseSensitiveString& operator=(const VoCaseSensitiveString& other);     ///< Takes bytes and locale.
    VoCaseSensitiveString& operator=(VoCaseSensitiveString&& other) noexcept; ///< `other` becomes empty.
    using VoString::operator=;

    /// @name Case-sensitive operators
    /// @{
    bool operator==(const char* text) const override;                ///< Exactly equal.
    bool operator==(const VoComparableString& other) const override; ///< Exactly equal.
    bool operator!=(const char* text) const override;                ///< Not exactly equal.
    bool operator!=(const VoComparableString& other) const override; ///< Not exactly equal.
    bool operator<(const VoComparableString& other) const override;  ///< Ordered before, by the bytes.
    /// @}
};

namespace std {

/// Of the exact bytes.
template <>
struct VOCORE_EXPORT hash<VoCaseSensitiveString>
{
    size_t operator()(const VoCaseSensitiveString& string) const noexcept; ///< Of the exact bytes.
};

} // namespace std
