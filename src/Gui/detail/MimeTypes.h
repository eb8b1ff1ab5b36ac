#pragma once

#include <Core/VoByteArray.h>

#include <string_view>

/// The names of the forms that have members of their own.
namespace vo::detail::mime {

constexpr const char* Text = "text/plain";
constexpr const char* HTML = "text/html";
constexpr const char* CSV = "text/csv";
constexpr const char* PNG = "image/png";

/// Whether bytes begin as such an image does.
inline bool IsPNG(const VoByteArray& image)
{
    constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
    return std::string_view(image.cdata(), image.size()).substr(0, signature.size()) == signature;
}

} // namespace vo::detail::mime
