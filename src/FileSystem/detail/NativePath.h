#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>

#include <filesystem>
#include <system_error>

class VoAbstractPath;
class VoDirectoryPath;

/// The one passage between paths and the system's names. No other code hands a path's text to the system.
///
/// On POSIX systems each backslash becomes "/" and the bytes stay as they are, whether or not they are UTF-8; on
/// Windows the text passes as UTF-16.
namespace vo::detail {

/// The system's form of a path.
/// @throws VoInvalidPathFileException when the text holds a zero byte, which would cut it
/// @{
VOCORE_PRIVATE_EXPORT std::filesystem::path ToNative(const VoFilePath& path);
VOCORE_PRIVATE_EXPORT std::filesystem::path ToNative(const VoAbstractPath& path);
/// @}

/// The path of a system's name, taken as it is but for doubled separators: names may begin or end with blanks.
/// @throws VoInvalidPathFileException "Name contains a backslash: " and the name, where that is an ordinary character
VOCORE_PRIVATE_EXPORT VoFilePath FromNative(const std::filesystem::path& path);

/// The path of one name in a directory. Throws as FromNative().
VOCORE_PRIVATE_EXPORT VoFilePath ChildFromNative(const VoFilePath& directory, const std::filesystem::path& name);

/// Refuses an over-long path before the disk is touched.
/// @throws VoPathSizeFileException
/// @{
VOCORE_PRIVATE_EXPORT void RequireValidLength(const VoFilePath& path);
VOCORE_PRIVATE_EXPORT void RequireValidLength(const VoAbstractPath& path);
/// @}

/// Whether an error says that nothing bears a name. Every other one says that the system could not or would not look:
/// then something may be there.
VOCORE_PRIVATE_EXPORT bool MeansMissing(const std::error_code& error);

/// True when a path, with every link on the way followed, lies in a directory (or is that directory). Pieces that do
/// not exist yet count as they are written; the directory must exist, else the answer is false.
/// @throws VoFileException "canonical: " and the reason, when the system does not let one look
VOCORE_PRIVATE_EXPORT bool IsInsideCanonical(const VoDirectoryPath& directory, const VoFilePath& path);

} // namespace vo::detail
