#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoLocation.h>

#include <optional>

namespace vo::updater {

/// Where an installed package came from.
struct VOCORE_EXPORT PackageSource
{
    VoLocation definition;     ///< Its definition.
    VoLocation declarations{}; ///< The document that declares its releases; null when it is not known.

    /// Where its releases are declared: the document on record, or else "declarations.xml" in the folder that the
    /// definition was published in.
    VoLocation declared() const;
};

/// Remembers where packages were installed from, so that they can be repaired and updated without being told again:
///
///     <update directory>\sources\<packageID>.txt     the path or URL of the definition, and that of the declarations
///
/// InstalledPackages::UpdatesAvailable() asks there. Installing records nothing by itself: a program does, after
/// InstalledPackages::Install(), when it wants that. User names and passwords in URLs are not recorded. Any thread may
/// call; records are replaced atomically.
class VOCORE_EXPORT PackageSources
{
public:
    PackageSources() = delete;

    /// Records where a package came from, instead of what was recorded before.
    /// @throws VoValidationException ("Invalid identifier: " + packageID); and what writing files throws
    static void Record(const VoUUID& packageID, const PackageSource& source);
    /// What is recorded; none when nothing is, or nothing that can be a place.
    /// @throws VoValidationException as Record(); and what reading files throws
    static std::optional<PackageSource> Recorded(const VoUUID& packageID);
    /// Forgets a package, and leaves no empty directory.
    static void Forget(const VoUUID& packageID);

    /// Whether two definitions are of one published folder: of releases beside the same declarations, or in one folder.
    static bool IsSamePlace(const VoLocation& a, const VoLocation& b);
};

} // namespace vo::updater
