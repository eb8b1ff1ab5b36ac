#include <Updater/PackageInstaller.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>
#include <Updater/InstalledPackages.h>
#include <Updater/detail/documents/Containment.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/install/FileActions.h>
#include <Updater/detail/install/FileCheck.h>
#include <Updater/detail/install/FileClaims.h>
#include <Updater/detail/install/FileInstaller.h>
#include <Updater/detail/install/FileOwners.h>
#include <Updater/detail/install/FileReuse.h>
#include <Updater/detail/install/InstallationJournal.h>
#include <Updater/detail/install/InstallerPrivate.h>
#include <Updater/detail/install/UpdatePlan.h>
#include <Updater/detail/install/UpdateTransaction.h>
#include <Updater/detail/install/VolumeSync.h>
#include <Updater/detail/registry/DamageRecord.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace vo::updater {

using namespace detail;

struct PackageInstaller::Private
{
    VoUniquePtr<InstalledPackageListing> installed; // null: nothing is installed
    PackageDifferences differences;
    FileOwners owners;
    FileClaims claims;
    VoDeque<ChunkListing> required; // by the differences alone
    UpdatePlan plan;                // without the files that are taken over as they are
    ReusedFiles reused;             // files that are copied from installed ones
    VoDeque<PlannedChunk> chunks{}; // what the others need
    bool isPrepared = false;
};

namespace {

// Up to so many files are forced to disk one by one: what others have written to the volume meanwhile is left alone.
constexpr std::uint64_t FewFiles = 64;

// Bytes that are read at once from a file that is copied.
constexpr std::size_t CopyBlock = 256 * 1024;

bool IsListingOf(const InstalledPackageListing& listing, const VoUUID& packageID)
{
    return listing.packageID().toString() == packageID.toString();
}

template <typename Files>
PackageDifferences Without(const PackageDifferences& differences, const Files& files)
{
    PackageDifferences result(differences.packageID(), differences.sourceVersionID(), differences.targetVersionID());
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (files.count(difference.fileID()) > 0)
            continue;
        switch (difference.type()) {
        case FileDifference::Added:
            result.fileAdded(difference.fileID());
            break;
        case FileDifference::Modified:
            result.fileModified(difference.fileID());
            break;
        case FileDifference::Removed:
            result.fileRemoved(difference.fileID());
            break;
        }
    }
    return result;
}

VoDeque<ChunkListing> Listings(const VoDeque<PlannedChunk>& chunks)
{
    VoDeque<ChunkListing> result;
    for (const PlannedChunk& chunk : chunks)
        result.pushBack(chunk.listing);
    return result;
}

bool IsInPlace(const InstalledFileListing& file, const VoFilePath& place)
{
    return Bytes(file.path()) == Bytes(place) && HasSize(Expected(place, file), Links::Followed);
}

} // namespace

PackageInstaller::PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                   const VoDirectoryPath& installationDirectory)
    : PackageInstaller(std::move(package), installationDirectory, InstallerSettings())
{
}

PackageInstaller::PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                   const VoDirectoryPath& installationDirectory, const InstallerSettings& settings)
    : AbstractPackageInstaller(std::move(package), installationDirectory, settings)
{
    AbstractPackageInstaller::m_private->prepare = [this] { prepare(); };
    compare(FindInstalled(packageID()));
}

PackageInstaller::PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                   const VoDirectoryPath& installationDirectory,
                                   VoUniquePtr<InstalledPackageListing> installed, const InstallerSettings& settings)
    : AbstractPackageInstaller(std::move(package), installationDirectory, settings)
{
    AbstractPackageInstaller::m_private->prepare = [this] { prepare(); };
    compare(std::move(installed));
}

PackageInstaller::PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                   const VoDirectoryPath& installationDirectory, const InstallationOptions& options)
    : PackageInstaller(std::move(package), installationDirectory, SettingsOf(options))
{
}

// The listing of the installed release. One that cannot be used must not keep the package from being installed anew.
VoUniquePtr<InstalledPackageListing> PackageInstaller::FindInstalled(const VoUUID& packageID)
{
    try {
        RequireSafeIdentifier(packageID);
    } catch (const VoValidationException&) {
        return {}; // the run refuses the advert
    }
    const VoFilePath path = InstalledPackages::InstalledPackageListingPath(packageID);
    // Installed, though the record is still that of the release before.
    if (const auto placed = InstallationJournal::OfListing(path).read(InstallationJournal::Phase::Placed))
        return VoUniquePtr<InstalledPackageListing>::Make(std::move(placed->result));
    if (!VoFileSystem::Exists(path))
        return {};
    VoString reason = "it is that of another package";
    try {
        VoUniquePtr<InstalledPackageListing> listing = InstalledPackageListing::Open(path);
        if (IsListingOf(*listing, packageID))
            return listing;
    } catch (...) {
        reason = CurrentExceptionText();
    }
    vo::logging::Logger::Get("updater").warning("Installed listing " + path.path() +
                                                " cannot be used, so nothing counts as installed: " + reason);
    return {};
}

InstallerSettings PackageInstaller::SettingsOf(const InstallationOptions& options)
{
    InstallerSettings settings;
    settings.reuseInstalledFiles = options.reuseInstalledFiles;
    settings.refuseForeignFiles = options.refuseForeignFiles;
    settings.refuseOtherDirectory = options.refuseOtherDirectory;
    settings.refuseOlder = options.refuseOlder;
    return settings;
}

PackageInstaller::~PackageInstaller() = default;

void PackageInstaller::compare(VoUniquePtr<InstalledPackageListing> installed)
{
    PackageDifferences differences = Differences(installed.get(), advertisedPackage());
    if (installed)
        addFilesNotInPlace(*installed, differences);
    FileOwners owners;
    if (!AbstractPackageInstaller::m_private->settings.isTemporary)
        owners = FileOwners::Others(
            packageID(), {installationDirectory(), installed ? installed->installationDirectory() : VoDirectoryPath()});
    FileClaims claims = findClaims(differences, installed.get(), owners);
    UpdatePlan plan = PlanUpdate(differences, installed.get(), advertisedPackage());
    VoDeque<ChunkListing> required = Listings(plan.chunks);
    const bool isAll = claims.adoptedIDs.empty();
    if (!isAll)
        plan = PlanUpdate(Without(differences, claims.adoptedIDs), installed.get(), advertisedPackage());
    ReusedFiles reused;
    if (installed && AbstractPackageInstaller::m_private->settings.reuseInstalledFiles)
        reused = findReusable(Without(differences, claims.adoptedIDs), *installed);
    m_private.reset(new Private{std::move(installed), std::move(differences), std::move(owners), std::move(claims),
                                std::move(required), std::move(plan), std::move(reused)});
    m_private->chunks = m_private->plan.chunks;
    if (m_private->reused.empty() && isAll) {
        AbstractPackageInstaller::m_private->needed.reset();
        return;
    }
    if (!m_private->reused.empty())
        m_private->chunks =
            PlanUpdate(Without(Without(m_private->differences, m_private->claims.adoptedIDs), m_private->reused),
                       m_private->installed.get(), advertisedPackage())
                .chunks;
    AbstractPackageInstaller::m_private->needed = Listings(m_private->chunks);
}

// None for an advert that the run will refuse: its paths cannot be told.
FileClaims PackageInstaller::findClaims(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                        FileOwners& owners) const
{
    if (AbstractPackageInstaller::m_private->settings.isTemporary)
        return {};
    try {
        requireValid();
    } catch (const VoException&) {
        return {};
    }
    return FindClaims(
        differences, installed, advertisedPackage(),
        [this](const AdvertisedFileListing& file) { return resolvedPath(file); }, owners);
}

// None for an advert that the run will refuse: its paths cannot be told.
ReusedFiles PackageInstaller::findReusable(const PackageDifferences& differences,
                                           const InstalledPackageListing& installed) const
{
    try {
        requireValid();
    } catch (const VoException&) {
        return {};
    }
    return FindReusableFiles(differences, installed, advertisedPackage(),
                             [this](const AdvertisedFileListing& file) { return resolvedPath(file); });
}

// The listings know nothing of files that were deleted, cut short or installed into another directory.
void PackageInstaller::addFilesNotInPlace(const InstalledPackageListing& installed,
                                          PackageDifferences& differences) const
{
    std::unordered_set<VoUUID> known;
    for (const FileDifference& difference : differences.fileDifferences())
        known.insert(difference.fileID());
    const InstallerSettings& settings = AbstractPackageInstaller::m_private->settings;
    std::unordered_set<VoUUID> damaged(settings.damaged.begin(), settings.damaged.end());
    if (!settings.isTemporary) {
        for (const VoUUID& file : DamagedFiles(packageID()))
            damaged.insert(file);
    }
    for (const AdvertisedFileListing& file : advertisedPackage().files()) {
        if (known.count(file.id()) > 0)
            continue;
        const auto* record = static_cast<const InstalledFileListing*>(installed.file(file.id()));
        if (damaged.count(file.id()) > 0 || !isInPlace(*record, file))
            differences.fileModified(file.id());
    }
}

bool PackageInstaller::isInPlace(const InstalledFileListing& record, const AdvertisedFileListing& file) const
{
    try {
        RequireSafeTarget(file.target());
        return IsInPlace(record, resolvedPath(file));
    } catch (const VoException&) {
        return false; // an unsafe target is refused by the run; a path that cannot be examined is written anew
    }
}

const PackageDifferences& PackageInstaller::differences() const
{
    return m_private->differences;
}

InstallationPlan PackageInstaller::plan() const
{
    requireValid();
    const UpdatePlan& update = m_private->plan;
    const AdvertisedPackageListing& advert = advertisedPackage();
    InstallationPlan result;
    result.packageID = advert.packageID();
    result.versionID = advert.versionID();
    result.name = advert.name();
    result.version = advert.version();
    if (m_private->installed) {
        result.isInstalled = true;
        result.installedVersionID = m_private->installed->versionID();
        result.installedVersion = m_private->installed->version();
        result.installedDirectory = m_private->installed->installationDirectory();
        result.isMove = isMove();
    }
    result.isUnfinished = InstalledPackages::IsUnfinished(advert.packageID(), m_private->installed.get());
    result.foreignFiles = m_private->claims.foreign;
    result.adoptedFiles = m_private->claims.adopted;
    result.conflicts = m_private->claims.conflicts;
    result.keptFiles = m_private->claims.kept;
    for (const PlannedFile& file : update.files) {
        const AdvertisedFileListing* target = advert.file(file.id);
        const bool isRemoved = file.type == FileDifference::Removed;
        result.files.pushBack({file.type, file.id, isRemoved ? file.path : resolvedPath(*target), file.bytes});
        if (const auto source = m_private->reused.find(file.id); source != m_private->reused.end()) {
            result.files.back().copiedFrom = source->second;
            result.bytesToCopy += file.bytes;
            ++result.copiedFiles;
        }
    }
    result.addedFiles = update.added;
    result.modifiedFiles = update.modified;
    result.removedFiles = update.removed;
    result.unchangedFiles = update.unchanged;
    result.bytesToWrite = update.bytesToWrite;
    result.bytesToRemove = update.bytesToRemove;
    const StagingDirectory directory = staging();
    for (const PlannedChunk& chunk : m_private->chunks) {
        if (directory.holds(chunk.listing)) {
            result.stagedChunks.pushBack(chunk.listing);
        } else {
            result.chunks.pushBack(chunk.listing);
            result.bytesToFetch += static_cast<std::uint64_t>(chunk.listing.size().bytes());
        }
    }
    return result;
}

VoDeque<ChunkListing> PackageInstaller::requiredChunks() const
{
    return m_private->required;
}

bool PackageInstaller::isMove() const
{
    return m_private->installed &&
           RealDirectory(m_private->installed->installationDirectory()) != RealDirectory(installationDirectory());
}

// What is installed may have changed since the caller looked, so this is asked again when nobody else can change it.
void PackageInstaller::requirePermitted() const
{
    const InstallerSettings& settings = AbstractPackageInstaller::m_private->settings;
    const FileClaims& claims = m_private->claims;
    if (!claims.conflicts.isEmpty()) {
        const InstallationPlan::OwnedFile& first = claims.conflicts.front();
        throw VoValidationException("File belongs to another package: " + first.path.path() + " (" + first.name + " " +
                                    first.packageID.toString() + ")");
    }
    if (settings.refuseOtherDirectory && isMove())
        throw VoValidationException("Package is installed in another directory: " +
                                    m_private->installed->installationDirectory().path());
    const bool isOlder = m_private->installed && advertisedPackage().version() < m_private->installed->version();
    if (isOlder && settings.refuseOlder)
        throw VoValidationException("Release is older than the installed one: " +
                                    advertisedPackage().version().toString());
    if (settings.refuseForeignFiles && !claims.foreign.isEmpty())
        throw VoValidationException("File belongs to no package: " + claims.foreign.front().path());
    if (isOlder)
        warning("Installing an older version " + advertisedPackage().version().toString() + " over " +
                m_private->installed->version().toString());
    for (const VoFilePath& path : claims.foreign)
        warning("File that belongs to no package is replaced: " + path.path());
}

// The registry's operations have recovered everything before; an installer that is used on its own looks after its
// package.
void PackageInstaller::prepare()
{
    if (m_private->isPrepared)
        return;
    const InstallationJournal journal = this->journal();
    if (!AbstractPackageInstaller::m_private->settings.record && journal.exists()) {
        Recover(journal, InstalledPackages::Record);
        compare(FindInstalled(packageID()));
    }
    requirePermitted();
    m_private->isPrepared = true;
}

VoUniquePtr<InstalledPackageListing> PackageInstaller::install(VoStopFlag stop)
{
    requireValid();
    prepare();
    const InstallationJournal journal = this->journal();
    UpdateTransaction transaction(advertisedPackage(), m_private->installed.get(), installationDirectory(), targets(),
                                  m_private->owners, journal);
    try {
        RequireFreeSpace(installationDirectory(), m_private->plan.bytesToWrite);
        transaction.begin();
        buildFiles(stop);
        stop.throwIfStopped();
        transaction.place([this](const TargetFile& target) { logInstalled(*target.file, target.place); });
        verify(stop);
        transaction.commit(AbstractPackageInstaller::m_private->settings.record);
    } catch (...) {
        transaction.rollBack();
        throw;
    }
    return VoUniquePtr<InstalledPackageListing>::Make(transaction.listing());
}

InstallationJournal PackageInstaller::journal() const
{
    if (AbstractPackageInstaller::m_private->settings.isTemporary)
        return InstallationJournal();
    return InstallationJournal::OfListing(InstalledPackages::InstalledPackageListingPath(packageID()));
}

VoDeque<TargetFile> PackageInstaller::targets() const
{
    std::unordered_set<VoUUID> written;
    for (const PlannedFile& file : m_private->plan.files) {
        if (file.type != FileDifference::Removed)
            written.insert(file.id);
    }
    VoDeque<TargetFile> result;
    for (const AdvertisedFileListing& file : advertisedPackage().files())
        result.pushBack({&file, resolvedPath(file), written.count(file.id()) > 0});
    return result;
}

void PackageInstaller::buildFiles(const VoStopFlag& stop)
{
    ChunkCache& cache = AbstractPackageInstaller::m_private->cache;
    for (const PlannedChunk& chunk : m_private->chunks)
        cache.expect(chunk.listing.id(), chunk.references);

    const std::uint64_t written = m_private->plan.added + m_private->plan.modified;
    const Durability durability = written > FewFiles && CanSyncVolume() ? Durability::Later : Durability::AtOnce;
    const std::vector<const PlannedFile*> order = buildOrder(cache.limit());
    auto& reader = AbstractPackageInstaller::m_private->reader;
    reader = std::make_unique<ChunkReader>(staging(), chunkLimit(), chunkOrder(order));
    const auto endReading = qScopeGuard([&reader] { reader.reset(); });
    std::uint64_t done = 0;
    for (const PlannedFile* file : order) {
        stop.throwIfStopped();
        buildFile(*file, durability, stop);
        AbstractPackageInstaller::m_private->report.send<InstallationProgressMessage>(++done,
                                                                                      m_private->plan.files.size());
    }
    if (durability == Durability::Later)
        SyncVolume(installationDirectory());
}

void PackageInstaller::buildFile(const PlannedFile& planned, Durability durability, const VoStopFlag& stop)
{
    if (planned.type == FileDifference::Removed) {
        diagnostic("Removing file: " + planned.path.path());
        return;
    }
    const AdvertisedFileListing& file = *advertisedPackage().file(planned.id);
    const char* what = planned.type == FileDifference::Added ? "Adding file: " : "Updating file: ";
    diagnostic(what + file.target().path());
    if (const auto source = m_private->reused.find(file.id()); source != m_private->reused.end())
        copyFile(file, source->second, durability, stop);
    else
        AbstractPackageInstaller::buildFile(file, resolvedPath(file), durability, stop);
}

// A file that was changed since it was chosen ends the run; the next one does without it.
void PackageInstaller::copyFile(const AdvertisedFileListing& file, const VoFilePath& source, Durability durability,
                                const VoStopFlag& stop)
{
    diagnostic("Copying from: " + source.path());
    const VoFilePath place = resolvedPath(file);
    FileInstaller built(place, durability);
    VoFileInputByteStream stream(source);
    stream.requireOpen();
    std::vector<char> block(CopyBlock);
    while (const std::size_t count = stream.read(block.data(), block.size())) {
        stop.throwIfStopped();
        built.write(block.data(), count);
    }
    if (!built.finish(file.checksum(), static_cast<std::uint64_t>(file.size().bytes())))
        throw VoDamagedContentException("File checksum does not match for: " + place.path());
}

// The file to build from chunks; null for one that is removed or copied.
const AdvertisedFileListing* PackageInstaller::builtFile(const PlannedFile& planned) const
{
    if (planned.type == FileDifference::Removed || m_private->reused.count(planned.id) > 0)
        return nullptr;
    return advertisedPackage().file(planned.id);
}

// Each chunk once, by its first use.
std::vector<VoUUID> PackageInstaller::chunkOrder(const std::vector<const PlannedFile*>& order) const
{
    std::vector<VoUUID> result;
    std::unordered_set<VoUUID> known;
    for (const PlannedFile* planned : order) {
        const AdvertisedFileListing* file = builtFile(*planned);
        for (std::size_t i = 0; file && i < file->chunks().size(); ++i) {
            const VoUUID& id = file->chunks()[i].chunkID();
            if (known.insert(id).second)
                result.push_back(id);
        }
    }
    return result;
}

// The order of the differences, which the IDs make a random one, as long as all chunks can be held; else the order of
// the chunks, so that each of them is still uncompressed only once.
std::vector<const PlannedFile*> PackageInstaller::buildOrder(std::uint64_t cacheLimit) const
{
    std::vector<const PlannedFile*> order;
    for (const PlannedFile& file : m_private->plan.files)
        order.push_back(&file);
    std::uint64_t bytes = 0;
    std::unordered_map<VoUUID, std::size_t> positions;
    for (const PlannedChunk& chunk : m_private->chunks) {
        bytes += std::min(chunk.extent, cacheLimit + 1);
        positions.emplace(chunk.listing.id(), positions.size());
    }
    if (bytes <= cacheLimit)
        return order;
    // The key of each file is looked up once, not in every comparison.
    using Position = std::pair<std::size_t, std::uint64_t>;
    std::vector<std::pair<Position, const PlannedFile*>> sorted;
    for (const PlannedFile* planned : order) {
        const AdvertisedFileListing* file = builtFile(*planned);
        Position position(0, 0);
        if (file && !file->chunks().isEmpty()) {
            const ChunkReferenceListing& first = file->chunks().front();
            position = {positions[first.chunkID()], first.offset()};
        }
        sorted.emplace_back(position, planned);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::transform(sorted.begin(), sorted.end(), order.begin(), [](const auto& entry) { return entry.second; });
    return order;
}

void PackageInstaller::verify(const VoStopFlag& stop)
{
    const EventReport& report = AbstractPackageInstaller::m_private->report;
    const VoDeque<AdvertisedFileListing>& files = advertisedPackage().files();
    const auto expected = [&](std::size_t i) { return Expected(resolvedPath(files[i]), files[i]); };
    VoDeque<VoUUID> damaged;
    for (const FileFinding& finding : VerifyFiles(files.size(), expected, report, stop))
        damaged.pushBack(files[finding.number].id());
    // Before the installation is recorded: a record that comes to nothing only lets files be written once more.
    if (!damaged.isEmpty() && !AbstractPackageInstaller::m_private->settings.isTemporary)
        RecordDamage(packageID(), damaged);
    ReportVerified(damaged.isEmpty(), report);
}

} // namespace vo::updater
