#include <Updater/PackageInstaller.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoStopFlag.h>
#include <Updater/VoStagedReleaseException.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/FileInstaller.h>
#include <Updater/detail/files/FilePatch.h>
#include <Updater/detail/files/FileStamp.h>
#include <Updater/detail/files/HeldTree.h>
#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/files/VolumeSync.h>
#include <Updater/detail/install/AttributePlan.h>
#include <Updater/detail/install/ChunkSource.h>
#include <Updater/detail/install/EventReport.h>
#include <Updater/detail/install/FileClaims.h>
#include <Updater/detail/install/FileReuse.h>
#include <Updater/detail/install/InstallerSettings.h>
#include <Updater/detail/install/PackageCheck.h>
#include <Updater/detail/install/PatchChoice.h>
#include <Updater/detail/install/StagingDirectory.h>
#include <Updater/detail/install/UpdatePlan.h>
#include <Updater/detail/install/UpdateTransaction.h>
#include <Updater/detail/registry/DamageRecord.h>
#include <Updater/detail/registry/FileOwners.h>
#include <Updater/detail/registry/InstallationJournal.h>
#include <Updater/detail/registry/PackageRecords.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace vo::updater {

using namespace detail;

struct PackageInstaller::PlannedFile
{
    // Of the few that are not built of chunks alone.
    struct Source
    {
        VoFilePath copiedFrom{};
        std::uint64_t patch = 0; // the length of the patch that makes it
    };

    explicit PlannedFile(const FileChange& planned)
        : change(planned)
    {
    }

    Source& source()
    {
        if (!m_source)
            m_source = std::make_unique<Source>();
        return *m_source;
    }
    VoFilePath copiedFrom() const { return m_source ? m_source->copiedFrom : VoFilePath(); }
    std::uint64_t patch() const { return m_source ? m_source->patch : 0; }

    FileChange change;

private:
    std::unique_ptr<Source> m_source{}; // null: nothing but chunks
};

struct PackageInstaller::Private
{
    // Without the files that are taken over as they are.
    struct Plan
    {
        InstallationPlan totals; // the rest of it, without files
        std::vector<PlannedFile> files;
    };

    VoUniquePtr<InstalledPackageListing> installed; // null: nothing is installed
    std::vector<FileChange> differences;
    FileOwners owners;
    Plan plan;
    VoDeque<ChunkUse> chunks; // those of the plan
    ChosenPatches patches;    // those of the plan
    AttributePlan attributes;
    std::shared_ptr<const ReleaseAttributes> planned; // what the plan was made of
    std::unordered_set<VoUUID> refusedPatches;        // files that patches failed to make
    bool isPrepared = false;
    SeenFiles::Stamps stamps{};                         // of the files of the advert, when they were verified
    std::int64_t begun = 0;                             // when that was
    std::vector<const AdvertisedFileListing*> unread{}; // built, and not yet compared with their digests
    std::int64_t bytesUnread = 0;
    std::once_flag isShown{}; // whether the next one has been made
    PackageDifferences shownDifferences{VoUUID(""), VoUUID(""), VoUUID("")};

    PackageDifferences madeDifferences(const AdvertisedPackageListing& advert) const;
};

PackageDifferences PackageInstaller::Private::madeDifferences(const AdvertisedPackageListing& advert) const
{
    const AbstractPackageListing& source = installed ? static_cast<const AbstractPackageListing&>(*installed) : advert;
    PackageDifferences result(source.packageID(), source.versionID(), advert.versionID());
    for (const FileChange& change : differences) {
        if (change.type == FileDifference::Removed)
            result.fileRemoved(TableOf(installed->files()).id(change.number));
        else if (change.type == FileDifference::Added)
            result.fileAdded(TableOf(advert.files()).id(change.number));
        else
            result.fileModified(TableOf(advert.files()).id(change.number));
    }
    return result;
}

namespace {

// Up to so many files are forced to disk one by one: what others have written to the volume meanwhile is left alone.
constexpr std::uint64_t FewFiles = 64;

// A smaller file is compared with its digest while it is written: reading it again would cost more than hashing it with
// others spares. What waits to be read is limited, so that it is still in the system's memory.
constexpr std::int64_t FewBytes = 16 * 1024;
constexpr std::int64_t MostBytesUnread = std::int64_t{256} << 20;

// Bytes that are read at once from a file that is copied.
constexpr std::size_t CopyBlock = 256 * 1024;

// The bytes of a file; none for an unknown size.
std::uint64_t LengthOf(const FileTable& files, FileTable::Number file)
{
    return static_cast<std::uint64_t>(std::max<std::int64_t>(files.length(file), 0));
}

bool IsInPlace(const InstalledFileListing& file, const VoFilePath& place)
{
    return Bytes(file.path()) == Bytes(place) && HasSize(Expected(place, file), Links::Followed);
}

// What IsInPlace says, for a target that is safe and with one look at the disk; false where that does not decide.
bool IsThere(const ListedFile& record, const VoDirectoryPath& directory, std::string_view target)
{
    const std::string_view path = record.path();
    const std::string_view root = Bytes(directory);
    if (path.size() != root.size() + target.size() || path.substr(0, root.size()) != root ||
        path.substr(root.size()) != target)
        return false;
    const auto stamp = StampOf(VoFilePath::CreateUnchecked(VoString(std::string(path))));
    return stamp && record.length() >= 0 && stamp->size == static_cast<std::uint64_t>(record.length());
}

// Looks at many files from several threads: the system answers each in turn, and is asked the next meanwhile.
template <typename Look>
void ForEachTogether(std::size_t count, Look look)
{
    constexpr std::size_t together = 512;
    if (count <= together) {
        for (std::size_t i = 0; i < count; ++i)
            look(i);
        return;
    }
    background_task::VoParallelTaskScheduler().parallelFor(0, count, together,
                                                           [&](std::size_t first, std::size_t last) {
                                                               for (std::size_t i = first; i < last; ++i)
                                                                   look(i);
                                                           });
}

// The number of an installed file that the advert has, with the same content; none where it has changed.
FileTable::Number UnchangedFile(const InstalledPackageListing& installed, const AdvertisedFileListing& file)
{
    const FileTable& files = TableOf(installed.files());
    const ListedFile advertised(file);
    const FileTable::Number number = files.find(*advertised.table, advertised.number);
    const bool isSame = number != FileTable::None && ListedFile(files, number).isEquivalent(advertised);
    return isSame ? number : FileTable::None;
}

} // namespace

PackageInstaller::PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                   const VoDirectoryPath& installationDirectory, const InstallationOptions& options)
    : AbstractPackageInstaller(std::move(package), installationDirectory, InstallerSettings{options})
{
    compare(FindInstalled(packageID()));
}

PackageInstaller::PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                                   const VoDirectoryPath& installationDirectory,
                                   VoUniquePtr<InstalledPackageListing> installed, const InstallerSettings& settings)
    : AbstractPackageInstaller(std::move(package), installationDirectory, settings)
{
    compare(std::move(installed));
}

PackageInstaller::~PackageInstaller() = default;

void PackageInstaller::compare(VoUniquePtr<InstalledPackageListing>&& installed)
{
    const AdvertisedPackageListing& advert = advertisedPackage();
    PackageDifferences differences = Differences(installed.get(), advert);
    if (installed)
        addFilesNotInPlace(*installed, differences);
    FileOwners owners;
    if (!settings().isTemporary)
        owners = FileOwners::Others(
            packageID(), {installationDirectory(), installed ? installed->installationDirectory() : VoDirectoryPath()});
    FileClaims claims = findClaims(differences, installed.get(), owners);
    AttributePlan attributes;
    if (isUsable()) {
        attributes = PlanAttributes(installed.get(), advert, installationDirectory());
        ClaimLinks(attributes, installed.get(), owners, claims);
    }
    const ReusedFiles unchanged = rebuildWronglyMarked(attributes, differences, claims);

    const Remaining written(differences, claims.adoptedIDs);
    ReusedFiles reused = findStaged(*written);
    reused.merge(findReusable(*Remaining(*written, reused), installed.get(), attributes));
    reused.insert(unchanged.begin(), unchanged.end());
    std::unordered_set<VoUUID> refused;
    if (m_private)
        refused = std::move(m_private->refusedPatches);
    const Remaining built(*written, reused);
    ChosenPatches patches = choosePatches(*built, installed.get(), refused);
    VoDeque<ChunkUse> chunks = ChunkUses(*Remaining(*built, patches), advert);
    Private::Plan plan{PlanTotals(*written, installed.get(), advert), {}};
    InstallationPlan& totals = plan.totals;
    const std::vector<FileChange> planned = ChangesOf(*written, installed.get(), advert);
    plan.files = std::vector<PlannedFile>(planned.begin(), planned.end());
    planCopies(plan.files, totals, reused, patches);
    PlanFetching(totals, Listings(chunks), PatchFiles(patches, *built));
    for (const LinkPlace& link : attributes.links)
        totals.bytesToWrite += link.copy ? static_cast<std::uint64_t>(link.copy->size.bytes()) : 0;
    totals.foreignFiles = std::move(claims.foreign);
    totals.adoptedFiles = std::move(claims.adopted);
    totals.conflicts = std::move(claims.conflicts);
    totals.keptFiles = std::move(claims.kept);
    std::vector<FileChange> changes = ChangesOf(differences, installed.get(), advert);
    m_private.reset(new Private{std::move(installed), std::move(changes), std::move(owners), std::move(plan),
                                std::move(chunks), std::move(patches), std::move(attributes), advert.attributes(),
                                std::move(refused)});
}

// Which files are copied or made by patches.
void PackageInstaller::planCopies(std::vector<PlannedFile>& files, InstallationPlan& totals, const ReusedFiles& reused,
                                  const ChosenPatches& patches) const
{
    const FileTable& table = TableOf(advertisedPackage().files());
    for (PlannedFile& file : files) {
        if ((reused.empty() && patches.empty()) || file.change.type == FileDifference::Removed)
            continue;
        const VoUUID id = table.id(file.change.number);
        if (const auto source = reused.find(id); source != reused.end()) {
            file.source().copiedFrom = source->second;
            totals.bytesToCopy += LengthOf(table, file.change.number);
            ++totals.copiedFiles;
        }
        const auto patch = patches.find(id);
        if (patch == patches.end())
            continue;
        file.source().patch = patch->second->size;
        totals.patchedFiles += patch->second->size > 0 ? 1 : 0;
    }
}

// Whether the advert's paths can be told: else the run will refuse it.
bool PackageInstaller::isUsable() const
{
    try {
        requireValid();
        return true;
    } catch (const VoException&) {
        return false;
    }
}

// Files whose bytes are right and whose permissions are not are built anew from themselves: a new file takes the place
// of the old one, or the old one stays, whenever the run ends. Those behind links that go are not there at all.
ReusedFiles PackageInstaller::rebuildWronglyMarked(const AttributePlan& attributes, PackageDifferences& differences,
                                                   FileClaims& claims) const
{
    ReusedFiles unchanged;
    for (const VoUUID& id : attributes.behindLinks)
        claims.adoptedIDs.erase(id);
    if (!attributes.marksFiles)
        return unchanged;
    std::unordered_set<VoUUID> known;
    for (const FileDifference& difference : differences.fileDifferences())
        known.insert(difference.fileID());
    for (const AdvertisedFileListing& file : advertisedPackage().files()) {
        const bool isAdopted = claims.adoptedIDs.count(file.id()) > 0;
        if ((known.count(file.id()) > 0 && !isAdopted) || !IsMarkedWrongly(attributes, file, installationDirectory()))
            continue;
        if (isAdopted)
            claims.adoptedIDs.erase(file.id());
        else
            differences.fileModified(file.id());
        const VoFilePath place = resolvedPath(file);
        if (Examine(Expected(place, file), Links::Kept, VoStopFlag()) == FileState::Sound)
            unchanged.emplace(file.id(), place);
    }
    return unchanged;
}

FileClaims PackageInstaller::findClaims(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                        FileOwners& owners) const
{
    if (settings().isTemporary || !isUsable())
        return {};
    return FindClaims(
        differences, installed, advertisedPackage(),
        [this](const AdvertisedFileListing& file) { return resolvedPath(file); }, owners);
}

ReusedFiles PackageInstaller::findReusable(const PackageDifferences& differences,
                                           const InstalledPackageListing* installed,
                                           const AttributePlan& attributes) const
{
    if (!installed || !settings().options.reuseInstalledFiles || !isUsable())
        return {};
    return FindReusableFiles(
        differences, *installed, advertisedPackage(),
        [this](const AdvertisedFileListing& file) { return resolvedPath(file); }, attributes.places());
}

// Built files that a staging left. One that is staged is only compared with its size here: its digest is taken when it
// is copied to its place.
ReusedFiles PackageInstaller::findStaged(const PackageDifferences& differences) const
{
    ReusedFiles result;
    if (settings().staged.isNull())
        return result;
    for (const FileDifference& difference : differences.fileDifferences()) {
        const AdvertisedFileListing* file = advertisedPackage().file(difference.fileID());
        if (!file || difference.type() == FileDifference::Removed)
            continue;
        const VoFilePath path = StagedFilePath(settings().staged, file->checksum());
        const ExpectedFile expected = Expected(path, *file);
        if (settings().isStaging ? IsSound(expected) : HasSize(expected, Links::Kept))
            result.emplace(file->id(), path);
    }
    return result;
}

// What is installed is read first: a patch makes nothing of other bytes. None for an advert that the run will refuse.
ChosenPatches PackageInstaller::choosePatches(const PackageDifferences& differences,
                                              const InstalledPackageListing* installed,
                                              const std::unordered_set<VoUUID>& refused) const
{
    if (!installed || !advertisedPackage().patches() || !isUsable())
        return {};
    const auto listed = [&](const VoUUID& id) { return refused.count(id) > 0 ? nullptr : installed->file(id); };
    ChosenPatches fitting = FittingPatches(differences, advertisedPackage(), listed);
    std::vector<VoUUID> files;
    for (const auto& [id, patch] : fitting)
        files.push_back(id);
    const auto expected = [&](std::size_t i) {
        const InstalledFileListing& file = *installed->file(files[i]);
        return Expected(file.path(), file);
    };
    ExamineAll(files.size(), expected, Links::Kept, VoStopFlag(), [&](std::size_t i, FileState state) {
        if (state != FileState::Sound)
            fitting.erase(files[i]);
    });
    return CheapestPatches(std::move(fitting), differences, advertisedPackage());
}

// The listings know nothing of files that were deleted, cut short or installed into another directory.
void PackageInstaller::addFilesNotInPlace(const InstalledPackageListing& installed,
                                          PackageDifferences& differences) const
{
    const VoDeque<AdvertisedFileListing>& files = advertisedPackage().files();
    const FileTable& advertised = TableOf(files);
    const FileTable& records = TableOf(installed.files());
    const auto numbersOf = [&](const auto& ids, const auto& idOf) {
        std::unordered_set<FileTable::Number> numbers;
        for (const auto& id : ids)
            numbers.insert(advertised.find(idOf(id)));
        return numbers;
    };
    const auto itself = [](const VoUUID& id) { return id; };
    const auto known =
        numbersOf(differences.fileDifferences(), [](const FileDifference& difference) { return difference.fileID(); });
    auto damaged = numbersOf(settings().damaged, itself);
    if (!settings().isTemporary)
        damaged.merge(numbersOf(DamagedFiles(packageID()), itself));
    const bool areTargetsSafe = isUsable();
    std::vector<char> isThere(files.size());
    ForEachTogether(files.size(), [&](std::size_t i) {
        const auto number = static_cast<FileTable::Number>(i);
        const FileTable::Number record = records.find(advertised, number);
        const bool isIntact = areTargetsSafe && record != FileTable::None &&
                              IsThere(ListedFile(records, record), installationDirectory(), advertised.path(number));
        isThere[i] = isIntact ? 1 : 0;
    });
    for (const AdvertisedFileListing& file : files) {
        const FileTable::Number number = ListedFile(file).number;
        const bool isSound = isThere[number] != 0 && damaged.count(number) == 0;
        const FileTable::Number record = isSound ? FileTable::None : records.find(advertised, number);
        if (isSound || known.count(number) > 0 || record == FileTable::None)
            continue;
        if (damaged.count(number) > 0 || !isInPlace(installed.files()[record], file))
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
    std::call_once(m_private->isShown,
                   [this] { m_private->shownDifferences = m_private->madeDifferences(advertisedPackage()); });
    return m_private->shownDifferences;
}

// Of a file to add or to rewrite.
VoUUID PackageInstaller::idOf(const PlannedFile& planned) const
{
    return TableOf(advertisedPackage().files()).id(planned.change.number);
}

InstallationPlan::File PackageInstaller::shown(const PlannedFile& planned) const
{
    const auto [type, number] = planned.change;
    if (type == FileDifference::Removed) {
        const FileTable& files = TableOf(m_private->installed->files());
        return {type, files.id(number), m_private->installed->files()[number].path(), LengthOf(files, number)};
    }
    const FileTable& files = TableOf(advertisedPackage().files());
    return {type,
            files.id(number),
            resolvedPath(advertisedPackage().files()[number]),
            LengthOf(files, number),
            planned.copiedFrom(),
            planned.patch()};
}

InstallationPlan PackageInstaller::plan() const
{
    requireValid();
    InstallationPlan result = m_private->plan.totals;
    if (const auto& installed = m_private->installed) {
        result.isInstalled = true;
        result.installedVersionID = installed->versionID();
        result.installedVersion = installed->version();
        result.installedDirectory = installed->installationDirectory();
        result.isMove = isMove();
    }
    result.isUnfinished = IsUnfinished(packageID(), m_private->installed.get());
    for (const PlannedFile& file : m_private->plan.files)
        result.files.pushBack(shown(file));
    ShowAttributes(m_private->attributes, result);
    const auto missingOf = [&](const VoDeque<ChunkListing>& files) {
        VoDeque<ChunkListing> missing;
        for (const ChunkListing& file : files)
            (chunkSource().staging().holds(file) ? result.stagedChunks : missing).pushBack(file);
        return missing;
    };
    VoDeque<ChunkListing> chunks = missingOf(m_private->plan.totals.chunks);
    PlanFetching(result, std::move(chunks), missingOf(m_private->plan.totals.patches));
    return result;
}

VoDeque<ChunkListing> PackageInstaller::requiredChunks() const
{
    return Listings(ChunkUses(m_private->madeDifferences(advertisedPackage()), advertisedPackage()));
}

VoDeque<ChunkListing> PackageInstaller::chunksToObtain() const
{
    VoDeque<ChunkListing> files = m_private->plan.totals.chunks;
    for (const ChunkListing& patch : m_private->plan.totals.patches)
        files.pushBack(patch);
    return files;
}

bool PackageInstaller::findOtherWay()
{
    if (m_private->patches.empty())
        return false;
    warning("Patches cannot be obtained; chunks are instead");
    for (const auto& [id, patch] : m_private->patches)
        m_private->refusedPatches.insert(id);
    planAgain();
    return true;
}

// Files are made of their patches in the staging directory, while chunks can still be had instead, and copied from
// there when all of the release is being built.
bool PackageInstaller::prepareStaged(const VoStopFlag& stop)
{
    if (m_private->patches.empty())
        return true;
    std::unordered_set<VoUUID> refused;
    for (PlannedFile& file : m_private->plan.files) {
        if (file.change.type == FileDifference::Removed || m_private->patches.count(idOf(file)) == 0)
            continue;
        try {
            applyPatch(file, stop);
        } catch (const VoException&) {
            stop.throwIfStopped();
            warning("File is built of chunks instead of its patch: " + shown(file).path.path() + ": " + FailureText());
            refused.insert(idOf(file));
        }
    }
    if (refused.empty())
        return true;
    m_private->refusedPatches.insert(refused.begin(), refused.end());
    planAgain();
    return false;
}

// What the run has asked for holds for chunks as for patches.
void PackageInstaller::planAgain()
{
    const bool isPrepared = m_private->isPrepared;
    compare(std::move(m_private->installed));
    m_private->isPrepared = isPrepared;
}

void PackageInstaller::applyPatch(PlannedFile& planned, const VoStopFlag& stop) const
{
    const VoUUID id = idOf(planned);
    const ReleasePatches::Patch& patch = *m_private->patches.at(id);
    const StagingDirectory& staging = chunkSource().staging();
    if (!staging.holds(patch.file()))
        throw VoDamagedContentException("Patch checksum mismatch: " + staging.chunkPath(patch.id).path());
    RequireFreeSpace(staging.path(), patch.after.size);
    const VoFilePath place = staging.path().file(patch.id.toString());
    FileInstaller made(place, Durability::Later);
    ApplyPatch(m_private->installed->file(id)->path(), staging.chunkPath(patch.id), patch.after.size,
               [&](const char* bytes, std::size_t size) {
                   stop.throwIfStopped();
                   made.write(bytes, size);
               });
    if (!made.finish(patch.after.checksum, patch.after.size))
        throw VoDamagedContentException("File checksum does not match for: " + place.path());
    planned.source().copiedFrom = BuiltPath(place);
}

bool PackageInstaller::isMove() const
{
    return m_private->installed &&
           RealDirectory(m_private->installed->installationDirectory()) != RealDirectory(installationDirectory());
}

// What is installed may have changed since the caller looked, so this is asked again when nobody else can change it.
void PackageInstaller::requirePermitted() const
{
    const InstallationOptions& options = settings().options;
    const InstallationPlan& plan = m_private->plan.totals;
    if (!plan.conflicts.isEmpty()) {
        const InstallationPlan::OwnedFile& first = plan.conflicts.front();
        throw VoValidationException("File belongs to another package: " + first.path.path() + " (" + first.name + " " +
                                    first.packageID.toString() + ")");
    }
    if (options.refuseOtherDirectory && isMove())
        throw VoValidationException("Package is installed in another directory: " +
                                    m_private->installed->installationDirectory().path());
    const bool isOlder = m_private->installed && advertisedPackage().version() < m_private->installed->version();
    if (isOlder && options.refuseOlder)
        throw VoValidationException("Release is older than the installed one: " +
                                    advertisedPackage().version().toString());
    if (options.refuseForeignFiles && !plan.foreignFiles.isEmpty())
        throw VoValidationException("File belongs to no package: " + plan.foreignFiles.front().path());
    if (isOlder)
        warning("Installing an older version " + advertisedPackage().version().toString() + " over " +
                m_private->installed->version().toString());
    for (const VoFilePath& path : plan.foreignFiles)
        warning("File that belongs to no package is replaced: " + path.path());
}

// The registry's operations have recovered everything before; an installer that is used on its own looks after its
// package.
void PackageInstaller::prepare()
{
    if (m_private->isPrepared)
        return;
    const InstallationJournal journal = this->journal();
    if (!settings().record && journal.exists()) {
        Recover(journal, RecordInstalled);
        compare(FindInstalled(packageID()));
    } else if (m_private->planned != advertisedPackage().attributes()) {
        compare(std::move(m_private->installed));
    }
    requirePermitted();
    requireAllStaged();
    // Asked again before the first file is written; here it saves a download that would be of no use.
    RequireFreeSpace(installationDirectory(), m_private->plan.totals.bytesToWrite);
    m_private->isPrepared = true;
}

// What takes no chunk is built anew.
void PackageInstaller::requireAllStaged() const
{
    if (settings().staged.isNull() || m_private->plan.totals.chunks.isEmpty())
        return;
    for (const PlannedFile& file : m_private->plan.files) {
        const AdvertisedFileListing* built = builtFile(file);
        if (built && !built->chunks().isEmpty())
            throw VoStagedReleaseException("Staged release lacks a file that is needed now, stage it again: " +
                                           resolvedPath(*built).path());
    }
}

void PackageInstaller::stage(const VoLocation& definition, const VoStopFlag& stop)
{
    requireValid();
    requirePermitted();
    VoFileSystem::CreateDirectory(settings().staged, true);
    RequireFreeSpace(settings().staged, bytesToStage());
    obtainPrepared(definition, stop, settings().options.downloads);
    buildFiles(stop);
}

std::uint64_t PackageInstaller::bytesToStage() const
{
    std::uint64_t bytes = 0;
    for (const PlannedFile& file : m_private->plan.files) {
        if (file.change.type != FileDifference::Removed && !isStaged(file))
            bytes += LengthOf(TableOf(advertisedPackage().files()), file.change.number);
    }
    return bytes;
}

// Whether a staging before has left the file whole.
bool PackageInstaller::isStaged(const PlannedFile& planned) const
{
    return settings().isStaging &&
           Bytes(planned.copiedFrom()) == Bytes(buildPlace(advertisedPackage().files()[planned.change.number]));
}

VoDeque<VoFilePath> PackageInstaller::stagedFiles() const
{
    VoDeque<VoFilePath> result;
    std::unordered_set<std::string> known;
    for (const PlannedFile& file : m_private->plan.files) {
        if (file.change.type == FileDifference::Removed)
            continue;
        const VoFilePath path = buildPlace(advertisedPackage().files()[file.change.number]);
        if (known.emplace(Bytes(path)).second)
            result.pushBack(path);
    }
    return result;
}

// Until the commit everything can be taken back, and is when anything throws, a raised stop flag included. What
// verify() finds wrong is reported and noted; it takes nothing back.
VoUniquePtr<InstalledPackageListing> PackageInstaller::install(VoStopFlag stop)
{
    requireValid();
    prepare();
    const HeldTree after(installationDirectory());
    const HeldTree before(m_private->installed ? m_private->installed->installationDirectory() : VoDirectoryPath());
    const InstallationJournal journal = this->journal();
    UpdateTransaction transaction(advertisedPackage(), m_private->installed.get(), installationDirectory(), targets(),
                                  m_private->owners, journal);
    try {
        RequireFreeSpace(installationDirectory(), m_private->plan.totals.bytesToWrite);
        transaction.begin();
        buildFiles(stop);
        stop.throwIfStopped();
        transaction.place([this](const TargetFile& target, const VoFilePath& place) {
            if (target.file)
                logInstalled(*target.file, place);
            else
                diagnostic("Installed link: " + place.path());
        });
        verify(stop);
        bool isRecorded = false;
        UpdateTransaction::Recorder record;
        if (settings().record)
            record = [&](const InstalledPackageListing& listing) { return isRecorded = settings().record(listing); };
        transaction.commit(record);
        if (isRecorded)
            SeenFiles::Keep(SeenFiles::PlaceOf(ListingPath(packageID())), ListingPath(packageID()), m_private->stamps,
                            m_private->begun);
    } catch (...) {
        transaction.rollBack();
        throw;
    }
    return VoUniquePtr<InstalledPackageListing>::Make(transaction.takeListing());
}

InstallationJournal PackageInstaller::journal() const
{
    if (settings().isTemporary)
        return InstallationJournal();
    return InstallationJournal::OfListing(ListingPath(packageID()));
}

VoDeque<TargetFile> PackageInstaller::targets() const
{
    const VoDeque<AdvertisedFileListing>& files = advertisedPackage().files();
    std::vector<bool> isWritten(files.size());
    for (const PlannedFile& file : m_private->plan.files) {
        if (file.change.type != FileDifference::Removed)
            isWritten[file.change.number] = true;
    }
    VoDeque<TargetFile> result;
    for (const AdvertisedFileListing& file : files)
        result.pushBack({&file, VoFilePath(), isWritten[ListedFile(file).number]});
    const AttributePlan& attributes = m_private->attributes;
    for (std::size_t i = 0; i < attributes.links.size(); ++i)
        result.pushBack({nullptr, attributes.links[i].place, attributes.isMade[i]});
    return result;
}

void PackageInstaller::buildFiles(const VoStopFlag& stop)
{
    ChunkSource& chunks = chunkSource();
    for (const ChunkUse& chunk : m_private->chunks)
        chunks.expect(chunk.listing.id(), chunk.references);

    const std::uint64_t written = m_private->plan.totals.addedFiles + m_private->plan.totals.modifiedFiles;
    const Durability durability = written > FewFiles && CanSyncVolume() ? Durability::Later : Durability::AtOnce;
    const PlannedFiles order = buildOrder(chunks.cacheLimit());
    m_private->unread.clear(); // a run that ended early leaves some
    m_private->bytesUnread = 0;
    chunks.readAhead(chunkOrder(order));
    const auto endReading = qScopeGuard([&chunks] { chunks.endReading(); });
    std::uint64_t done = 0;
    for (const PlannedFile* file : order) {
        stop.throwIfStopped();
        buildFile(*file, durability, stop);
        if (m_private->bytesUnread >= MostBytesUnread)
            compareBuilt(stop);
        events().send<InstallationProgressMessage>(++done, m_private->plan.files.size());
    }
    compareBuilt(stop);
    if (!settings().isStaging) // a commit makes them
        buildLinks(durability, stop);
    if (durability == Durability::Later)
        SyncVolume(settings().isStaging ? settings().staged : installationDirectory());
}

// Beside its place, or in the folder of staged files.
VoFilePath PackageInstaller::buildPlace(const AdvertisedFileListing& file) const
{
    return settings().isStaging ? StagedFilePath(settings().staged, file.checksum()) : resolvedPath(file);
}

void PackageInstaller::buildFile(const PlannedFile& planned, Durability durability, const VoStopFlag& stop)
{
    const bool isStaging = settings().isStaging;
    if (planned.change.type == FileDifference::Removed) {
        if (!isStaging)
            diagnostic("Removing file: " + m_private->installed->files()[planned.change.number].path().path());
        return;
    }
    const AdvertisedFileListing& file = advertisedPackage().files()[planned.change.number];
    const VoFilePath place = buildPlace(file);
    if (isStaged(planned))
        return;
    const char* what = isStaging                                      ? "Staging file: "
                       : planned.change.type == FileDifference::Added ? "Adding file: "
                                                                      : "Updating file: ";
    diagnostic(what + file.target().path());
    const bool isFromChunks = planned.copiedFrom().isNull();
    const bool isReadLater = isFromChunks && !isStaging && file.size().bytes() >= FewBytes;
    if (isFromChunks)
        chunkSource().build(file, place, durability, isReadLater ? Digest::Later : Digest::Passing, stop);
    else
        copyFile(Expected(place, file), planned.copiedFrom(), durability, stop);
    if (isReadLater) {
        m_private->unread.push_back(&file);
        m_private->bytesUnread += file.size().bytes();
    } else if (isStaging) {
        PutInPlace(BuiltPath(place), place);
    } else {
        markBuilt(file);
    }
}

// Built files are read on all processors and hashed several at a time.
void PackageInstaller::compareBuilt(const VoStopFlag& stop)
{
    const std::vector<const AdvertisedFileListing*> files = std::exchange(m_private->unread, {});
    m_private->bytesUnread = 0;
    const auto expected = [&](std::size_t i) { return Expected(BuiltPath(resolvedPath(*files[i])), *files[i]); };
    ExamineAll(files.size(), expected, Links::Kept, stop, [&](std::size_t i, FileState state) {
        const AdvertisedFileListing& file = *files[i];
        const VoFilePath place = resolvedPath(file);
        // Reading once more says why one cannot be read.
        if (state != FileState::Sound && VoFileSystem::Checksum(BuiltPath(place)) != file.checksum())
            chunkSource().throwDamaged(file, place);
        CopyPermissions(place, BuiltPath(place));
        markBuilt(file);
    });
}

// Where neither release has programs, a file keeps what its user gave it.
void PackageInstaller::markBuilt(const AdvertisedFileListing& file)
{
    const AttributePlan& attributes = m_private->attributes;
    if (attributes.marksFiles)
        SetExecutable(BuiltPath(resolvedPath(file)), attributes.programs.count(file.id()) > 0);
}

// When the files are built, so that there is what copies are made of.
void PackageInstaller::buildLinks(Durability durability, const VoStopFlag& stop)
{
    const AttributePlan& attributes = m_private->attributes;
    for (std::size_t i = 0; i < attributes.links.size(); ++i) {
        const LinkPlace& link = attributes.links[i];
        if (!attributes.isMade[i])
            continue;
        stop.throwIfStopped();
        diagnostic("Making link: " + link.place.path());
        if (!link.copy) {
            MakeLink(BuiltPath(link.place), link.to);
            continue;
        }
        const VoFilePath built = BuiltPath(link.source);
        copyFile(*link.copy, KindOf(built) == FileKind::File ? built : link.source, durability, stop);
    }
}

// A file that was changed since it was chosen ends the run; the next one does without it.
void PackageInstaller::copyFile(const ExpectedFile& file, const VoFilePath& source, Durability durability,
                                const VoStopFlag& stop)
{
    diagnostic("Copying from: " + source.path());
    FileInstaller built(file.path, durability);
    VoFileInputByteStream stream(source);
    stream.requireOpen();
    std::vector<char> block(CopyBlock);
    while (const std::size_t count = stream.read(block.data(), block.size())) {
        stop.throwIfStopped();
        built.write(block.data(), count);
    }
    if (!built.finish(file.checksum, static_cast<std::uint64_t>(file.size.bytes())))
        throw VoDamagedContentException("File checksum does not match for: " + file.path.path());
}

// The file to build from chunks; null for one that is removed or copied.
const AdvertisedFileListing* PackageInstaller::builtFile(const PlannedFile& planned) const
{
    if (planned.change.type == FileDifference::Removed || !planned.copiedFrom().isNull())
        return nullptr;
    return &advertisedPackage().files()[planned.change.number];
}

// Each chunk once, by its first use.
std::vector<VoUUID> PackageInstaller::chunkOrder(const PlannedFiles& order) const
{
    std::vector<VoUUID> result;
    std::unordered_set<std::uint32_t> known;
    for (const PlannedFile* planned : order) {
        const AdvertisedFileListing* file = builtFile(*planned);
        if (!file)
            continue;
        const ListedFile listed(*file);
        for (const FileTable::Piece& piece : listed.pieces()) {
            if (known.insert(piece.chunk).second)
                result.emplace_back(VoString(listed.table->chunkIDs()[piece.chunk]));
        }
    }
    return result;
}

// The order of the differences, which the IDs make a random one, as long as all chunks can be held; else the order of
// the chunks, so that each of them is still uncompressed only once.
PackageInstaller::PlannedFiles PackageInstaller::buildOrder(std::uint64_t cacheLimit) const
{
    PlannedFiles order;
    for (const PlannedFile& file : m_private->plan.files)
        order.push_back(&file);
    std::uint64_t bytes = 0;
    std::unordered_map<VoUUID, std::size_t> positions;
    for (const ChunkUse& chunk : m_private->chunks) {
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
        if (file && ListedFile(*file).pieces().size() > 0) {
            const ListedFile listed(*file);
            const FileTable::Piece& first = *listed.pieces().begin();
            position = {positions[VoUUID(VoString(listed.table->chunkIDs()[first.chunk]))], first.offset};
        }
        sorted.emplace_back(position, planned);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::transform(sorted.begin(), sorted.end(), order.begin(), [](const auto& entry) { return entry.second; });
    return order;
}

// The stamps are taken before the files are read: what changes meanwhile differs from them.
std::vector<std::size_t> PackageInstaller::filesToVerify()
{
    const bool isSpared = m_private->installed && settings().record && !settings().options.examineAll;
    const VoFilePath listing = ListingPath(packageID());
    const SeenFiles seen = isSpared ? SeenFiles::At(SeenFiles::PlaceOf(listing), listing) : SeenFiles();
    std::vector<std::size_t> numbers;
    m_private->begun = SeenFiles::Now();
    m_private->stamps.clear();
    const VoDeque<AdvertisedFileListing>& files = advertisedPackage().files();
    m_private->stamps.resize(files.size());
    ForEachTogether(files.size(), [&](std::size_t i) { m_private->stamps[i] = StampOf(resolvedPath(files[i])); });
    for (std::size_t number = 0; number < files.size(); ++number) {
        const AdvertisedFileListing& file = files[number];
        const auto known = isSpared ? UnchangedFile(*m_private->installed, file) : FileTable::None;
        if (known == FileTable::None || !seen.isUnchanged(known, m_private->stamps[number]))
            numbers.push_back(number);
    }
    return numbers;
}

void PackageInstaller::verify(const VoStopFlag& stop)
{
    const VoDeque<AdvertisedFileListing>& files = advertisedPackage().files();
    const std::vector<std::size_t> numbers = filesToVerify();
    const auto expected = [&](std::size_t i) { return Expected(resolvedPath(files[numbers[i]]), files[numbers[i]]); };
    VoDeque<VoUUID> damaged;
    for (const FileFinding& finding : VerifyFiles(numbers.size(), expected, events(), stop)) {
        damaged.pushBack(files[numbers[finding.number]].id());
        m_private->stamps[numbers[finding.number]].reset();
    }
    // Before the installation is recorded: a record that comes to nothing only lets files be written once more.
    if (!damaged.isEmpty() && !settings().isTemporary)
        RecordDamage(packageID(), damaged);
    AttributePlaces places{m_private->attributes.links, {}, m_private->attributes.folders};
    for (const VoUUID& id : m_private->attributes.programs)
        places.programs.push_back(resolvedPath(*advertisedPackage().file(id)));
    VerificationReport others;
    VerifyAttributes(places, others, events(), stop);
    ReportVerified(damaged.isEmpty() && others.isIntact(), events());
}

} // namespace vo::updater
