#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUniquePtr.h>
#include <Updater/UpdateMessages.h>

#include <functional>

namespace vo::updater {

class AdvertisedPackageListing;

/// The publishing side's check of a freshly built release.
class VOCORE_EXPORT PackageVerifier
{
public:
    PackageVerifier() = delete;

    /// Installs the release into a temporary directory, as onto a machine that has nothing of it, and compares every
    /// installed file byte by byte with the file below `sourceDirectory` that it was built from.
    ///
    /// Returns whether every file matched. The callback, which may be empty, receives the installer's messages and one
    /// message for each file that does not match. Neither the registry nor the staging directory of this machine's own
    /// installations is touched.
    /// @throws VoInstallationFailedException when the release cannot be installed
    /// @throws VoNullPointerException for an empty pointer
    static bool Verify(VoUniquePtr<AdvertisedPackageListing> package, const VoFilePath& definitionFile,
                       const VoDirectoryPath& sourceDirectory,
                       std::function<void(const VoSharedPtr<AbstractMessage>&)> callback);
    /// As above; a raised stop flag ends it with VoInstallationFailedException ("Installation failed: User cancelled")
    /// or, while comparing, with VoUserCancelledException.
    static bool Verify(VoUniquePtr<AdvertisedPackageListing> package, const VoFilePath& definitionFile,
                       const VoDirectoryPath& sourceDirectory,
                       std::function<void(const VoSharedPtr<AbstractMessage>&)> callback, VoStopFlag stop);
};

} // namespace vo::updater
