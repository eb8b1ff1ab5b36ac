#pragma once

#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

#include <variant>

namespace vo::tool {

/// Where a document stands: in a file of this machine, or on a server.
using Location = std::variant<VoFilePath, VoUrl>;

/// A typed location: a text with "://" in it is a URL, any other one a path, made absolute.
/// @throws UsageError which begins with `source`, for a text that can be neither and for a URL that is neither http
/// nor https
Location TypedLocation(const VoString& source, const VoString& text);

/// The URL without user name and password, or the path as this system writes it.
VoString LocationText(const Location& location);

} // namespace vo::tool
