#pragma once

#include <FileSystem/VoLocation.h>

namespace vo::tool {

/// A typed location: a text with "://" in it is a URL, any other one a path, made absolute.
/// @throws UsageError which begins with `source`, for a text that can be neither and for a URL that is neither http
/// nor https
VoLocation TypedLocation(const VoString& source, const VoString& text);

/// The URL without user name and password, or the path as this system writes it.
VoString LocationText(const VoLocation& location);

} // namespace vo::tool
