#include <Updater/AbstractPackageInstaller.h>

#include <Core/VoByteArray.h>
#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <Core/VoMathsException.h>
#include <Core/VoPair.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoUrl.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Containment.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/RemoteDocument.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/install/FileActions.h>
#include <Updater/detail/install/FileInstaller.h>
#include <Updater/detail/install/InstallerPrivate.h>

#include <algorithm>
#include <utility>

namespace vo::updater {

using namespace detail;

namespace {

// What a chunk may hold beyond the bytes that the advert refers to: a builder can leave pieces in it that no file uses.
constexpr std::uint64_t ChunkSlack = std::uint64_t{64} << 20;

VoUniquePtr<AdvertisedPackageListing> Required(VoUniquePtr<AdvertisedPackageListing> package)
{
    *package;
    return package;
}

std::uint64_t LargestExtent(const AdvertisedPackageListing& package)
{
    std::uint64_t largest = 0;
    for (const AdvertisedFileListing& file : package.files()) {
        for (const ChunkReferenceListing& piece : file.chunks())
            largest = std::max(largest, piece.offset() + piece.length());
    }
    return largest;
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

bool IsPieceInside(const ChunkReferenceListing& piece, const VoByteArray& bytes)
{
    return piece.offset() <= bytes.size() && piece.length() <= bytes.size() - piece.offset();
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
    return run(advertUrl, std::move(stop), VoDownloadPolicy());
}

VoUniquePtr<InstalledPackageListing> AbstractPackageInstaller::run(const VoUrl& advertUrl, VoStopFlag stop,
                                                                   const VoDownloadPolicy& downloads)
{
    return runSteps(
        [&] {
            diagnostic("Requesting download of required files");
            download(advertUrl, stop, downloads);
            diagnostic("Required files downloaded");
        },
        stop);
}

VoUniquePtr<InstalledPackageListing> AbstractPackageInstaller::run(const VoFilePath& definitionFile, VoStopFlag stop)
{
    return runSteps(
        [&] {
            diagnostic("Starting to obtain required files");
            obtainChunks(definitionFile, stop);
            diagnostic("Required files obtained");
        },
        stop);
}

VoUniquePtr<InstalledPackageListing> AbstractPackageInstaller::runSteps(const std::function<void()>& obtain,
                                                                        const VoStopFlag& stop)
{
    try {
        requireValid();
        if (m_private->prepare)
            m_private->prepare();
        obtain();
        m_private->report.report(AbstractMessage::InstallationStarted, "Starting installation");
        VoUniquePtr<InstalledPackageListing> listing = install(stop);
        m_private->report.report(AbstractMessage::InstallationComplete, "Installation complete");
        cleanStagingDirectory();
        return listing;
    } catch (...) {
        const VoString text = WithText("Installation failed", FailureText());
        m_private->report.report(AbstractMessage::InstallationFailed, text);
        throw VoInstallationFailedException(text, std::current_exception());
    }
}

// Everything that can be told from the advert alone, before anything of it is used.
void AbstractPackageInstaller::requireValid() const
{
    if (m_private->isValid)
        return;
    RequireRecordableDirectory(installationDirectory());
    ValidatePackage(advertisedPackage());
    m_private->isValid = true;
}

StagingDirectory AbstractPackageInstaller::staging() const
{
    if (!m_private->settings.staging.isNull())
        return StagingDirectory(m_private->settings.staging);
    return StagingDirectory(VoUpdater::DownloadDirectory().directory(packageID().toString()));
}

VoDeque<ChunkListing> AbstractPackageInstaller::chunksToFetch(const VoStopFlag& stop) const
{
    const StagingDirectory directory = staging();
    VoDeque<ChunkListing> result;
    std::uint64_t bytes = 0;
    for (const ChunkListing& chunk : m_private->needed ? *m_private->needed : requiredChunks()) {
        stop.throwIfStopped();
        if (directory.holds(chunk))
            continue;
        bytes += static_cast<std::uint64_t>(std::max<std::int64_t>(chunk.size().bytes(), 0));
        result.pushBack(chunk);
    }
    RequireFreeSpace(directory.path(), bytes);
    return result;
}

void AbstractPackageInstaller::download(const VoUrl& advertUrl, const VoStopFlag& stop,
                                        const VoDownloadPolicy& downloads)
{
    try {
        diagnostic("Preparing download");
        staging().create();
        VoDeque<ChunkListing> chunks = chunksToFetch(stop);
        if (chunks.isEmpty()) {
            diagnostic("No download required");
            return;
        }
        m_private->report.report(AbstractMessage::DownloadStarted, VoString(), "Starting download");
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
        m_private->report.report(AbstractMessage::DownloadComplete, VoString(), "Download complete");
    } catch (...) {
        error(WithText("Download failed", FailureText()));
        throw;
    }
}

void AbstractPackageInstaller::reportDamaged(const VoDeque<ChunkListing>& chunks, const VoUrl& advertUrl,
                                             std::size_t attempt, const VoDownloadPolicy& downloads) const
{
    for (const ChunkListing& chunk : chunks) {
        const VoUrl url = BesideDocument(advertUrl, chunk.path());
        warning("Chunk checksum mismatch, fetched again: " + staging().chunkPath(chunk.id()).path());
        if (downloads.onRetry)
            downloads.onRetry({url, static_cast<unsigned>(attempt + 1), VoTimeDuration(), "Chunk checksum mismatch"});
    }
}

void AbstractPackageInstaller::fetch(const VoDeque<ChunkListing>& chunks, const VoUrl& advertUrl,
                                     const VoStopFlag& stop, const VoDownloadPolicy& downloads)
{
    const StagingDirectory directory = staging();
    VoDeque<RemoteFile> files;
    for (const ChunkListing& chunk : chunks)
        files.pushBack({BesideDocument(advertUrl, chunk.path()), directory.chunkPath(chunk.id()), chunk.size()});
    FetchFiles(files, stop, downloads, [this](const VoDownloadProgress& progress) {
        m_private->report.send<DownloadProgressMessage>(progress);
    });
}

void AbstractPackageInstaller::obtainChunks(const VoFilePath& definitionFile, const VoStopFlag& stop)
{
    try {
        diagnostic("Starting chunk copy");
        const StagingDirectory directory = staging();
        directory.create();
        const VoDeque<ChunkListing> chunks = chunksToFetch(stop);
        if (chunks.isEmpty())
            diagnostic("No chunk copying required");
        for (const ChunkListing& chunk : chunks) {
            stop.throwIfStopped();
            directory.copy(BesideDocument(definitionFile, chunk.path()), chunk.id());
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
    const VoUUID& id = reference.chunkID();
    if (const VoByteArray* cached = m_private->cache.find(id))
        return *cached;
    if (!advertisedPackage().chunk(id))
        throw VoNullPointerException("Failed to find required chunk");
    try {
        return m_private->cache.insert(id, m_private->reader ? m_private->reader->take(id)
                                                             : staging().read(id, chunkLimit()));
    } catch (const VoFileNotFoundException&) {
        throw VoNullPointerException("Failed to find required chunk");
    }
}

std::uint64_t AbstractPackageInstaller::chunkLimit()
{
    if (m_private->chunkLimit == 0)
        m_private->chunkLimit = std::max(LargestExtent(advertisedPackage()), ChunkSlack);
    return m_private->chunkLimit;
}

void AbstractPackageInstaller::installFile(const AdvertisedFileListing& file, InstalledPackageListing& listing)
{
    const VoFilePath place = resolvedPath(file);
    if (!Containment(installationDirectory()).holds(place))
        throw VoValidationException("Invalid target path: " + file.target().path());
    ensureDirectoryExists(place.parent(), listing);
    buildFile(file, place, Durability::AtOnce, VoStopFlag());
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

// Every way in which the bytes can be wrong ends in the one exception about the file's checksum; the log tells which.
void AbstractPackageInstaller::buildFile(const AdvertisedFileListing& file, const VoFilePath& place,
                                         Durability durability, const VoStopFlag& stop)
{
    FileInstaller built(place, durability);
    bool isSound = true;
    for (const ChunkReferenceListing& piece : file.chunks()) {
        stop.throwIfStopped();
        isSound = isSound && writePiece(piece, built);
        m_private->cache.release(piece.chunkID());
    }
    if (isSound && built.finish(file.checksum(), static_cast<std::uint64_t>(file.size().bytes())))
        return;
    logDamagedChunks(file);
    throw VoDamagedContentException("File checksum does not match for: " + place.path());
}

bool AbstractPackageInstaller::writePiece(const ChunkReferenceListing& piece, FileInstaller& built)
{
    const VoByteArray* bytes = nullptr;
    try {
        bytes = &chunk(piece);
    } catch (const VoInvalidConversionException& failure) {
        warning(failure.message());
        return false;
    } catch (const VoOverflowException& failure) {
        warning(failure.message());
        return false;
    }
    if (!IsPieceInside(piece, *bytes)) {
        warning("Piece lies outside of its chunk: " + staging().chunkPath(piece.chunkID()).path());
        return false;
    }
    built.write(bytes->cdata() + piece.offset(), static_cast<std::size_t>(piece.length()));
    return true;
}

void AbstractPackageInstaller::logDamagedChunks(const AdvertisedFileListing& file) const
{
    const StagingDirectory directory = staging();
    VoUUID last("");
    for (const ChunkReferenceListing& piece : file.chunks()) {
        if (piece.chunkID() == last)
            continue;
        last = piece.chunkID();
        const ChunkListing* chunk = advertisedPackage().chunk(last);
        if (chunk && !directory.holds(*chunk))
            warning("Chunk checksum mismatch: " + directory.chunkPath(last).path());
    }
}

void AbstractPackageInstaller::logInstalled(const AdvertisedFileListing& file, const VoFilePath& place) const
{
    vo::logging::Logger::Get("updater").diagnostic("Installed " + place.path() + " [" + file.id().toString() + "]");
}

void AbstractPackageInstaller::cleanStagingDirectory()
{
    diagnostic("Cleaning staging directory");
    const StagingDirectory directory = staging();
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
    m_private->report.diagnostic(text);
}

void AbstractPackageInstaller::warning(const VoString& text) const
{
    m_private->report.warning(text);
}

void AbstractPackageInstaller::error(const VoString& text) const
{
    m_private->report.error(text);
}

} // namespace vo::updater
