#pragma once

#include <Core/CaseFold.h>
#include <Core/VoString.h>

/// @file
/// The hidden states of strings and views, which make each other.

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
