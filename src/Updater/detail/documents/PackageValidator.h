#pragma once

// The checks that a release must pass before anything of it is fetched or written. Pure: no file is touched.

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vo::updater {
class AdvertisedPackageListing;
}

namespace vo::updater::detail {

/// Whether a text without control characters comes back from XML as it is: UTF-8 without the two code points that XML
/// excludes.
VOCORE_PRIVATE_EXPORT bool SurvivesXML(const std::string& text);

/// @name Single values
/// Throw VoValidationException with the text shown unless the value is safe. An identifier must be fit to be a file
/// name, a path must stay below the directory it will be appended to, and both must survive being written to XML and
/// read again.
/// @{
bool IsSafeIdentifier(const VoUUID& id);                                      ///< Whether the next one does not throw.
VOCORE_PRIVATE_EXPORT void RequireSafeIdentifier(const VoUUID& id);           ///< "Invalid identifier: " + id
VOCORE_PRIVATE_EXPORT void RequireSafeTarget(const VoFilePath& target);       ///< "Invalid target path: " + target
VOCORE_PRIVATE_EXPORT void RequireSafeChunkPath(const VoFilePath& path);      ///< "Invalid chunk path: " + path
VOCORE_PRIVATE_EXPORT void RequireSafeDefinitionPath(const VoFilePath& path); ///< "Invalid definition path: " + path
/// A target that every client installs: safe, and no name that the installer itself uses. "Invalid target path: " +
/// target + ": " + the rule that it breaks.
VOCORE_PRIVATE_EXPORT void RequirePublishableTarget(const VoFilePath& target);
/// A target that files of every system can have: what Windows refuses besides is not in it. Told as above.
VOCORE_PRIVATE_EXPORT void RequirePortableTarget(const VoFilePath& target);
/// A directory whose path documents can record; else throws VoInvalidParameterException ("Installation directory is not
/// UTF-8: " + directory).
VOCORE_PRIVATE_EXPORT void RequireRecordableDirectory(const VoDirectoryPath& directory);
/// Without control characters. "Invalid package name: " + name
VOCORE_PRIVATE_EXPORT void RequireShowableName(const VoString& name);
/// @}

/// Two targets that cannot stand beside each other, as they were given.
struct TargetClash
{
    std::string_view first;
    std::string_view second;
    bool isDirectory; ///< The first is a directory on the way to the second; else they are one name to some system.
};
/// A clash among targets, if there is one.
VOCORE_PRIVATE_EXPORT std::optional<TargetClash> FindTargetClash(const std::vector<std::string_view>& targets);

/// A form of a text that is equal for texts which some file system takes for one name: Unicode case folding, wider than
/// the folding of paths.
VOCORE_PRIVATE_EXPORT VoString FoldedName(const VoString& text);

/// Two IDs that differ in letter case alone would share a file or directory where names ignore case.
/// @throws VoValidationException ("Invalid identifier: " + id) when `other` is such another spelling of `id`
void RequireNoOtherSpelling(const VoUUID& id, const VoUUID& other);

/// Checks a whole advert: identifiers and paths as above, and that it is sound. A target that ends like the names of
/// files being installed is an invalid target path.
///
/// Package and chunk IDs become file names and must be fit for that. Version and file IDs only have to be texts of 1 to
/// 128 bytes without control characters, because messages and logs show them.
/// @throws VoValidationException with "Invalid package definition: " + what is wrong for a duplicate file ID, a target
/// or chunk ID that occurs twice in any letter case, a target that is also a directory of another one, a reference to
/// an unknown chunk, a negative size, pieces whose lengths do not add up to the file's size, or an offset and length
/// that overflow
VOCORE_PRIVATE_EXPORT void ValidatePackage(const AdvertisedPackageListing& package);

} // namespace vo::updater::detail
