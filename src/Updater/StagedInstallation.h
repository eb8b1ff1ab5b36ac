#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoLocation.h>

#include <cstdint>

namespace vo::updater {

/// A release that was fetched, built and checked, and is yet to be put in place (InstalledPackages::Stage and Commit).
/// A plain value.
struct VOCORE_EXPORT StagedInstallation
{
    VoUUID packageID{""};      ///< The package.
    VoUUID versionID{""};      ///< The release.
    VoString name;             ///< The release's display name.
    VoVersion version;         ///< The release's version.
    VoDirectoryPath directory; ///< Where it is going to be installed.
    VoLocation definition;     ///< Where its definition was found; without the user and password of a URL.
    /// The installed release that it was staged over, without which it cannot be committed; empty for none.
    VoUUID installedVersionID{""};
    std::uint64_t files = 0; ///< How many files are staged.
    std::uint64_t bytes = 0; ///< Their length.
};

/// Commits every release that is staged, each as InstalledPackages::Commit does. To be called first thing by an
/// application that is updated itself, before it opens files of its own:
///
///     if (vo::updater::CommitPending())
///         return Restart();
///
/// True when files were put in place, so that this process may be running on old ones. Nothing is staged for most
/// starts, which takes one look at a folder. What fails is logged, and never thrown: a release that cannot be put in
/// place yet, because files are in use, a folder is read-only or another process is installing, stays staged and is
/// tried at the next start; one that never can be, because it is damaged, fits the installation no more or is no longer
/// to be trusted, is dropped.
VOCORE_EXPORT bool CommitPending();

} // namespace vo::updater
