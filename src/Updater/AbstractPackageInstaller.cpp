#include <Updater/AbstractPackageInstaller.h>

#include <Core/VoException.h>
#include <Core/VoPair.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/ReleaseTree.h>
#include <Updater/detail/documents/RemoteDocument.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/HeldTree.h>
#include <Updater/detail/install/ChunkSource.h>
#include <Updater/detail/install/EventReport.h>
#include <Updater/detail/install/InstallerSettings.h>
#include <Updater/detail/install/UpdatePlan.h>

#include <algorithm>
#include <utility>

namespace vo::updater {

using namespace detail;

struct AbstractPackageInstaller::Private
{
    Private(VoUniquePtr<AdvertisedPackageListing> advert, const VoDirectoryPath& installationDirectory,
            const InstallerSettings& runSettings)
        : package(std::move(advert))
        , directory(installationDirectory)
        , settings(runSettings)
        , events(
              package->packageID(), package->versionID(),
              [this](const VoSharedPtr<AbstractMessage>& message) { BroadcastGuarded(broadcaster, message); }, &Log(),
              EventReport::Label::IDs)
    {
    }

    const VoUniquePtr<AdvertisedPackageListing> package;
    const VoDirectoryPath directory;
    const InstallerSettings settings;
    MessageBroadcaster broadcaster;
    const EventReport events;
    std::unique_ptr<ChunkSource> chunks; // null: not needed yet
    bool isValid = false;                // whether the advert has passed the checks
};

namespace {

VoUniquePtr<AdvertisedPackageListing> Required(VoUniquePtr<AdvertisedPackageListing> package)
{
    *package;
    return package;
}

// The advert's URL and the policy for another attempt at what arrived damaged: the places in a circle, so that the next
// one comes first.
std::pair<VoUrl, VoDownloadPolicy> StartingElsewhere(const VoUrl& advertUrl, const VoDownloadPolicy& downloads,
                                                     std::size_t attempt)
{
    const VoDeque<VoUrl> adverts = downloads.locations(advertUrl);
    if (adverts.size() == 1)
        return {advertUrl, downloads};
    const std::size_t first = attempt % adverts.size();
    VoDownloadPolicy policy = downloads;
    policy.mirrored = adverts[first].parent();
    policy.mirrors.clear();
    for (std::size_t i = 1; i < adverts.size(); ++i)
        policy.mirrors.pushBack(adverts[(first + i) % adverts.size()].parent());
    return {adverts[first], policy};
}

} // namespace

AbstractPackageInstaller::AbstractPackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                                   const VoDirectoryPath& installationDirectory)
    : AbstractPackageInstaller(std::move(package), installationDirectory, InstallerSettings())
{
}

AbstractPackageInstaller::AbstractPackageInstaller(const AdvertisedPackageListing& package,
                                                   const VoDirectoryPath& installationDirectory)
    : AbstractPackageInstaller(VoUniquePtr<AdvertisedPackageListing>::Make(package), installationDirectory)
{
}

AbstractPackageInstaller::AbstractPackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                                   const VoDirectoryPath& installationDirectory,
                                                   const InstallerSettings& settings)
    : m_private(std::make_unique<Private>(Required(std::move(package)), installationDirectory, settings))
{
}

AbstractPackageInstaller::~AbstractPackageInstaller() = default;

VoFilePath AbstractPackageInstaller::resolvedPath(const AdvertisedFileListing& file) const
{
    return m_private->directory.appended(file.target());
}

VoUniquePtr<InstalledPackageListing> AbstractPackageInstaller::run(const VoUrl& advertUrl, VoStopFlag stop)
{
    return run(advertUrl, stop, VoDownloadPolicy());
}

VoUniquePtr<InstalledPackageListing> AbstractPackageInstaller::run(const VoFilePath& definitionFile, VoStopFlag stop)
{
    return run(definitionFile, stop, VoDownloadPolicy());
}

VoUniquePtr<InstalledPackageListing> AbstractPackageInstaller::run(const VoLocation& definition, VoStopFlag stop,
                                                                   const VoDownloadPolicy& downloads)
{
    try {
        requireValid();
        if (!advertisedPackage().attributes()) {
            FindDocuments(*m_private->package, definition, stop, downloads);
            m_private->isValid = false;
            requireValid();
        }
        prepare();
        obtainPrepared(definition, stop, downloads);
        events().report(AbstractMessage::InstallationStarted, "Starting installation");
        VoUniquePtr<InstalledPackageListing> listing = install(stop);
        events().report(AbstractMessage::InstallationComplete, "Installation complete");
        cleanStagingDirectory();
        return listing;
    } catch (...) {
        const VoString text = WithText("Installation failed", FailureText());
        events().report(AbstractMessage::InstallationFailed, text);
        throw VoInstallationFailedException(text, std::current_exception());
    }
}

void AbstractPackageInstaller::obtainPrepared(const VoLocation& definition, const VoStopFlag& stop,
                                              const VoDownloadPolicy& downloads)
{
    do {
        try {
            obtain(definition, stop, downloads);
        } catch (const VoUserCancelledException&) {
            throw;
        } catch (...) {
            stop.throwIfStopped();
            if (!findOtherWay())
                throw;
            obtain(definition, stop, downloads);
        }
    } while (!prepareStaged(stop));
}

void AbstractPackageInstaller::obtain(const VoLocation& definition, const VoStopFlag& stop,
                                      const VoDownloadPolicy& downloads)
{
    if (definition.isUrl()) {
        diagnostic("Requesting download of required files");
        download(definition.url(), stop, downloads);
        diagnostic("Required files downloaded");
    } else {
        diagnostic("Starting to obtain required files");
        obtainChunks(definition.file(), stop);
        diagnostic("Required files obtained");
    }
}

// Everything that can be told from the advert alone, before anything of it is used.
void AbstractPackageInstaller::requireValid() const
{
    if (m_private->isValid)
        return;
    RequireRecordableDirectory(installationDirectory());
    ValidatePackage(advertisedPackage());
    if (const auto& attributes = advertisedPackage().attributes())
        ValidateAttributes(*attributes, advertisedPackage());
    m_private->isValid = true;
}

void AbstractPackageInstaller::prepare() {}

bool AbstractPackageInstaller::prepareStaged(const VoStopFlag& /*stop*/)
{
    return true;
}

bool AbstractPackageInstaller::findOtherWay()
{
    return false;
}

VoDeque<ChunkListing> AbstractPackageInstaller::chunksToObtain() const
{
    return requiredChunks();
}

const InstallerSettings& AbstractPackageInstaller::settings() const
{
    return m_private->settings;
}

const EventReport& AbstractPackageInstaller::events() const
{
    return m_private->events;
}

// Made when it is first needed: an identifier that is no directory's name is refused before.
ChunkSource& AbstractPackageInstaller::chunkSource() const
{
    if (!m_private->chunks) {
        const StagingDirectory staging = settings().staging.isNull() ? StagingDirectory::OfPackage(packageID())
                                                                     : StagingDirectory(settings().staging);
        m_private->chunks =
            std::make_unique<ChunkSource>(advertisedPackage(), staging, settings().cacheLimit, events());
    }
    return *m_private->chunks;
}

VoDeque<ChunkListing> AbstractPackageInstaller::chunksToFetch(const VoStopFlag& stop) const
{
    VoDeque<ChunkListing> chunks = chunkSource().missing(chunksToObtain(), stop);
    RequireFreeSpace(chunkSource().staging().path(), BytesOf(chunks));
    return chunks;
}

void AbstractPackageInstaller::download(const VoUrl& advertUrl, const VoStopFlag& stop,
                                        const VoDownloadPolicy& downloads)
{
    try {
        diagnostic("Preparing download");
        chunkSource().staging().create();
        VoDeque<ChunkListing> chunks = chunksToFetch(stop);
        if (chunks.isEmpty()) {
            diagnostic("No download required");
            return;
        }
        events().report(AbstractMessage::DownloadStarted, VoString(), "Starting download");
        const std::size_t attempts = std::max<std::size_t>(downloads.retries, downloads.mirrors.size()) + 1;
        fetch(chunks, advertUrl, stop, downloads);
        // A chunk that stays damaged is left to the building of the files, which decides by their checksums.
        for (std::size_t attempt = 1; attempt < attempts; ++attempt) {
            chunks = chunksToFetch(stop);
            if (chunks.isEmpty())
                break;
            const auto [url, policy] = StartingElsewhere(advertUrl, downloads, attempt);
            reportDamaged(chunks, url, attempt, downloads);
            fetch(chunks, url, stop, policy);
        }
        events().report(AbstractMessage::DownloadComplete, VoString(), "Download complete");
    } catch (...) {
        error(WithText("Download failed", FailureText()));
        throw;
    }
}

void AbstractPackageInstaller::reportDamaged(const VoDeque<ChunkListing>& chunks, const VoUrl& advertUrl,
                                             std::size_t attempt, const VoDownloadPolicy& downloads) const
{
    for (const ChunkListing& chunk : chunks) {
        const VoUrl url = advertUrl.parent().appended(chunk.path());
        warning("Chunk checksum mismatch, fetched again: " + chunkSource().staging().chunkPath(chunk.id()).path());
        if (downloads.onRetry)
            downloads.onRetry({url, static_cast<unsigned>(attempt + 1), VoTimeDuration(), "Chunk checksum mismatch"});
    }
}

void AbstractPackageInstaller::fetch(const VoDeque<ChunkListing>& chunks, const VoUrl& advertUrl,
                                     const VoStopFlag& stop, const VoDownloadPolicy& downloads)
{
    const StagingDirectory& directory = chunkSource().staging();
    VoDeque<RemoteFile> files;
    for (const ChunkListing& chunk : chunks)
        files.pushBack({advertUrl.parent().appended(chunk.path()), directory.chunkPath(chunk.id()), chunk.size()});
    FetchFiles(files, stop, downloads,
               [this](const VoDownloadProgress& progress) { events().send<DownloadProgressMessage>(progress); });
}

void AbstractPackageInstaller::obtainChunks(const VoFilePath& definitionFile, const VoStopFlag& stop)
{
    try {
        diagnostic("Starting chunk copy");
        const StagingDirectory& directory = chunkSource().staging();
        directory.create();
        const VoDeque<ChunkListing> chunks = chunksToFetch(stop);
        if (chunks.isEmpty())
            diagnostic("No chunk copying required");
        for (const ChunkListing& chunk : chunks) {
            stop.throwIfStopped();
            directory.copy(definitionFile.parent().appended(chunk.path()), chunk.id());
        }
        diagnostic("Chunk copy complete");
    } catch (...) {
        error("Chunk copy failed: " + FailureText());
        throw;
    }
}

VoReceiver AbstractPackageInstaller::connect(std::function<void(const VoSharedPtr<AbstractMessage>&)> callback)
{
    return m_private->broadcaster.connect(std::move(callback));
}

const VoDirectoryPath& AbstractPackageInstaller::installationDirectory() const
{
    return m_private->directory;
}

const AdvertisedPackageListing& AbstractPackageInstaller::advertisedPackage() const
{
    return *m_private->package;
}

const VoUUID& AbstractPackageInstaller::packageID() const
{
    return advertisedPackage().packageID();
}

const VoUUID& AbstractPackageInstaller::versionID() const
{
    return advertisedPackage().versionID();
}

void AbstractPackageInstaller::broadcast(const VoSharedPtr<AbstractMessage>& message)
{
    BroadcastGuarded(m_private->broadcaster, message);
}

const VoByteArray& AbstractPackageInstaller::chunk(const ChunkReferenceListing& reference)
{
    return chunkSource().bytes(reference.chunkID());
}

void AbstractPackageInstaller::installFile(const AdvertisedFileListing& file, InstalledPackageListing& listing)
{
    const VoFilePath place = resolvedPath(file);
    const HeldTree held(installationDirectory());
    if (!Containment(installationDirectory()).holds(place))
        throw VoValidationException("Invalid target path: " + file.target().path());
    ensureDirectoryExists(place.parent(), listing);
    chunkSource().build(file, place, Durability::AtOnce, Digest::Passing, VoStopFlag());
    PutInPlace(BuiltPath(place), place);
    listing.add(place, file.id(), file.checksum(), file.size());
    logInstalled(file, place);
}

void AbstractPackageInstaller::ensureDirectoryExists(const VoDirectoryPath& directory, InstalledPackageListing& listing)
{
    if (directory.isNull() || VoFileSystem::IsDirectory(directory))
        return;
    ensureDirectoryExists(directory.parent(), listing);
    MakeDirectory(directory);
    listing.add(directory);
}

void AbstractPackageInstaller::logInstalled(const AdvertisedFileListing& file, const VoFilePath& place) const
{
    Log().diagnostic("Installed " + place.path() + " [" + file.id().toString() + "]");
}

void AbstractPackageInstaller::cleanStagingDirectory()
{
    diagnostic("Cleaning staging directory");
    const StagingDirectory& directory = chunkSource().staging();
    for (const ChunkListing& chunk : advertisedPackage().chunks()) {
        const VoFilePath path = directory.chunkPath(chunk.id());
        diagnostic("Removing chunk: " + path.path());
        try {
            EraseFile(path);
        } catch (...) {
            diagnostic("Chunk removal failure: " + path.path());
        }
    }
    diagnostic("Removing staging directory");
    try {
        directory.remove();
    } catch (...) {
        diagnostic("Failed to remove staging directory");
    }
}

void AbstractPackageInstaller::diagnostic(const VoString& text) const
{
    events().diagnostic(text);
}

void AbstractPackageInstaller::warning(const VoString& text) const
{
    events().warning(text);
}

void AbstractPackageInstaller::error(const VoString& text) const
{
    events().error(text);
}

} // namespace vo::updater
