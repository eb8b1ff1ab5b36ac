#pragma once

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>

#include <string>

/// @file
/// Paths between people and the library: typed ones are relative to the current directory and use the system's
/// separator.

namespace vo::tool {

/// @{ A typed path made absolute; the disk is not asked. Throws UsageError, which begins with `source`, for a text
/// that cannot be a path.
VoFilePath TypedFile(const VoString& source, const VoString& text);
VoDirectoryPath TypedDirectory(const VoString& source, const VoString& text);
/// @}

/// @{ Texts of paths for messages, which must not fail: what can be no path stays as it is. Without a separator at the
/// end. The one makes a path of this system of one of the library, the other a typed one absolute.
std::string NativeText(const std::string& path);
std::string AbsoluteText(const std::string& typed);
/// @}

/// @{ The path as this system writes it.
VoString PathText(const VoFilePath& path);
VoString PathText(const VoDirectoryPath& path); ///< Without a separator at its end.
/// @}

/// Where a link leads, as this system writes it.
VoString WayText(const VoString& to);

/// The path as seen from a directory, when it lies inside, else all of it; as this system writes it.
VoString PathTextBelow(const VoDirectoryPath& directory, const VoFilePath& path);

} // namespace vo::tool
