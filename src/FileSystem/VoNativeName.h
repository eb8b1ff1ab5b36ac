#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <filesystem>

/// @file
/// Paths as the system and other libraries name them. Inside the library a path has backslashes everywhere.

namespace vo {

/// The system's name of a path: with "/" and all bytes as they are, whether or not they are UTF-8; on Windows the
/// path's text in UTF-8.
/// @throws VoInvalidPathFileException when the text holds a zero byte
/// @{
VOCORE_EXPORT VoString NativeName(const VoFilePath& path);
VOCORE_EXPORT VoString NativeName(const VoDirectoryPath& path);
/// @}

/// The path of such a name, taken as it is but for doubled separators: names may begin or end with blanks.
/// @throws VoInvalidPathFileException "Name contains a backslash: " and the name, where that is an ordinary character
VOCORE_EXPORT VoFilePath FromNativeName(const VoString& name);

/// The same as paths of the standard library. Throw as NativeName() and FromNativeName().
/// @{
VOCORE_EXPORT std::filesystem::path ToStdPath(const VoFilePath& path);
VOCORE_EXPORT std::filesystem::path ToStdPath(const VoDirectoryPath& path);
VOCORE_EXPORT VoFilePath FromStdPath(const std::filesystem::path& path);
/// The path of a directory, whether or not its name ends with a separator.
/// @throws VoInvalidPathException "Invalid : in path name"
VOCORE_EXPORT VoDirectoryPath FromStdDirectory(const std::filesystem::path& path);
/// @}

} // namespace vo
