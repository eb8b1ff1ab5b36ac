#pragma once

#include <Core/VoString.h>
#include <Core/detail/CaseFold.h>

/// @file
/// The hidden states of strings and views, which make each other.

namespace vo::detail {

/// The bytes of a string or view, without a copy.
inline std::string_view BytesOf(const VoComparableString& string)
{
    const std::size_t size = string.size();
    return size ? std::string_view(&string[0], size) : std::string_view("");
}

} // namespace vo::detail

struct VoString::Private
{
    std::string bytes;
    vo::detail::LocalePtr locale; ///< Never null.
};

struct VoStringView::Private
{
    const char* bytes = ""; ///< Never null.
    std::size_t length = 0;
    vo::detail::LocalePtr locale; ///< Never null.

    std::string_view text() const noexcept { return {bytes, length}; }
};
