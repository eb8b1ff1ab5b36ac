#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

/// The updater's place on disk, and the making of new IDs.
///
///     <application data>\updates\            UpdateSystemDirectory()
///         download\<packageID>\              staged chunks of a running installation
///         documents\                         documents fetched from servers, to be asked for changes only
///         staged\                            releases that are built and checked, and yet to be put in place
///         installed\packages.xml             the registry of installed packages
///         installed\<packageID>.xml          the listing of one installed release
///
/// Safe to call from any thread.
class VOCORE_EXPORT VoUpdater
{
public:
    VoUpdater() = delete;

    /// @{ The release channels, and the directories of their packages, on the publishing side.
    static constexpr const char* ReleaseChannel = "release";
    static constexpr const char* BetaChannel = "beta";
    static constexpr const char* ReleasePackagesDirectory = "release-packages";
    static constexpr const char* BetaPackagesDirectory = "beta-packages";
    /// @}

    /// The override directory if one was set, else "updates" in the application data directory.
    static VoDirectoryPath UpdateSystemDirectory();
    static VoDirectoryPath DownloadDirectory();         ///< UpdateSystemDirectory() / "download"
    static VoDirectoryPath InstalledListingDirectory(); ///< UpdateSystemDirectory() / "installed"
    static VoFilePath InstalledPackagesPath();          ///< InstalledListingDirectory() / "packages.xml"

    /// Puts the updater's files elsewhere for the rest of the process; may be called again with another directory but
    /// never undone. Meant for start-up, tests and tools. Logged as a diagnostic in the category "updater".
    static void OverrideUpdateSystemDirectory(const VoDirectoryPath& directory);

    /// Whether a text may be the ID of a package: it can serve as a file's name on every platform. 1 to 128 bytes, no
    /// control character and none of \\ / : * ? " < > |, no blank or dot at either end, no name of a device, and not
    /// "packages".
    static bool IsIdentifier(const VoString& text);

    /// A new random ID in the form without braces, which serves as a file name and as a piece of a URL unchanged.
    static VoUUID GenerateID();
};
