#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Updater/InstallationOptions.h>
#include <Updater/PackageInstaller.h>
#include <Updater/detail/install/ChunkCache.h>
#include <Updater/detail/install/UpdateTransaction.h>

#include <cstddef>
#include <utility>

namespace vo::updater::detail {

/// How a run goes about its work: what its user chose, and what those choose who run an installer for their own ends.
struct InstallerSettings
{
    InstallationOptions options{};
    VoDirectoryPath staging{}; ///< The staging directory; null: the package's own.
    /// Where the files of the release are staged; null: they are built beside their places.
    VoDirectoryPath staged{};
    bool isStaging = false;   ///< Whether the run fills that folder; else it takes from there whatever it writes.
    bool isTemporary = false; ///< Whether the installation itself is: then nothing is noted, and no package is asked.
    /// Keeps the listing as the last step that can still be undone; what it throws undoes the run. Empty: the caller
    /// keeps what the run returns.
    UpdateTransaction::Recorder record{};
    std::size_t cacheLimit = ChunkCache::UsualLimit; ///< Bytes of uncompressed chunks to hold.
    VoDeque<VoUUID> damaged{}; ///< Files to write although the listings say that they are unchanged.
};

/// An installer for those who know what is installed (null: nothing) and how the run differs from the usual one.
class ConfiguredInstaller final : public PackageInstaller
{
public:
    using PackageInstaller::stage;
    using PackageInstaller::stagedFiles;

    ConfiguredInstaller(VoUniquePtr<AdvertisedPackageListing> package, const VoDirectoryPath& installationDirectory,
                        VoUniquePtr<InstalledPackageListing> installed, const InstallerSettings& settings)
        : PackageInstaller(std::move(package), installationDirectory, std::move(installed), settings)
    {
    }
};

} // namespace vo::updater::detail
