#pragma once

// What the installers share behind their public headers.

#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Subsystem/VoLogging.h>
#include <Updater/AbstractPackageInstaller.h>
#include <Updater/detail/install/ChunkCache.h>
#include <Updater/detail/install/ChunkReader.h>
#include <Updater/detail/install/EventReport.h>
#include <Updater/detail/install/InstallerSettings.h>
#include <Updater/detail/install/StagingDirectory.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace vo::updater {

struct AbstractPackageInstaller::Private
{
    Private(VoUniquePtr<AdvertisedPackageListing> advert, const VoDirectoryPath& installationDirectory,
            const detail::InstallerSettings& runSettings)
        : package(std::move(advert))
        , directory(installationDirectory)
        , settings(runSettings)
        , cache(runSettings.cacheLimit)
        , report(
              package->packageID(), package->versionID(),
              [this](const VoSharedPtr<AbstractMessage>& message) { detail::BroadcastGuarded(broadcaster, message); },
              &vo::logging::Logger::Get("updater"), detail::EventReport::Label::IDs)
    {
    }

    const VoUniquePtr<AdvertisedPackageListing> package;
    const VoDirectoryPath directory;
    const detail::InstallerSettings settings;
    std::function<void()> prepare;               // what a subclass does before anything is obtained
    bool isValid = false;                        // whether the advert has passed the checks
    std::uint64_t chunkLimit = 0;                // what a chunk may uncompress to; 0: not known yet
    std::optional<VoDeque<ChunkListing>> needed; // the chunks to obtain, when they are less than those required
    std::unique_ptr<detail::ChunkReader> reader; // while files are built
    detail::ChunkCache cache;
    detail::MessageBroadcaster broadcaster;
    const detail::EventReport report;
};

} // namespace vo::updater
