#pragma once

// What the installers share behind their public headers.

#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Threading/VoBroadcaster.h>
#include <Updater/AbstractPackageInstaller.h>
#include <Updater/detail/install/ChunkCache.h>
#include <Updater/detail/install/ChunkReader.h>
#include <Updater/detail/install/InstallerSettings.h>
#include <Updater/detail/install/StagingDirectory.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace vo::updater {

namespace detail {

using MessageBroadcaster = VoBroadcaster<VoSharedPtr<AbstractMessage>>;

template <typename M, typename... Arguments>
VoSharedPtr<AbstractMessage> Message(Arguments&&... arguments)
{
    return VoSharedPtr<M>::Make(std::forward<Arguments>(arguments)...);
}

/// Sends a message. What a receiver throws is logged: work goes on whatever they do.
void BroadcastGuarded(MessageBroadcaster& broadcaster, const VoSharedPtr<AbstractMessage>& message);

/// The text of the exception in flight; empty for one that is neither of the library nor of the standard.
VoString FailureText();

/// "sentence: text", or the sentence alone when there is no text.
VoString WithText(const char* sentence, const VoString& text);

} // namespace detail

struct AbstractPackageInstaller::Private
{
    Private(VoUniquePtr<AdvertisedPackageListing> advert, const VoDirectoryPath& installationDirectory,
            const detail::InstallerSettings& runSettings)
        : package(std::move(advert))
        , directory(installationDirectory)
        , settings(runSettings)
        , cache(runSettings.cacheLimit)
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
};

} // namespace vo::updater
