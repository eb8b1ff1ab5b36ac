#pragma once

// The checks that a release must pass before anything of it is fetched or written. Pure: no file is touched.

#include <Core/VoExport.h>
#include <Core/VoForward.h>

namespace vo::updater {
class AdvertisedPackageListing;
}

namespace vo::updater::detail {

/// @{ Throw VoValidationException with the text shown unless the value is safe.
VOCORE_PRIVATE_EXPORT void RequireSafeIdentifier(const VoUUID& id);           ///< "Invalid identifier: " + id
VOCORE_PRIVATE_EXPORT void RequireSafeTarget(const VoFilePath& target);       ///< "Invalid target path: " + target
VOCORE_PRIVATE_EXPORT void RequireSafeChunkPath(const VoFilePath& path);      ///< "Invalid chunk path: " + path
VOCORE_PRIVATE_EXPORT void RequireSafeDefinitionPath(const VoFilePath& path); ///< "Invalid definition path: " + path
/// @}

/// Checks a whole advert: identifiers and paths as above, and that it is sound. Throws VoValidationException, with
/// "Invalid package definition: " + what is wrong for a duplicate file ID, a target or chunk ID that occurs twice in
/// any letter case, a target that is also a directory of another one, a reference to an unknown chunk, a negative size,
/// pieces whose lengths do not add up to the file's size, or an offset and length that overflow.
VOCORE_PRIVATE_EXPORT void ValidatePackage(const AdvertisedPackageListing& package);

} // namespace vo::updater::detail
