#include <Updater/detail/operations/Operations.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/VoStagedReleaseException.h>
#include <Updater/VoUntrustedReleaseException.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/HeldTree.h>
#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/install/InstallerSettings.h>
#include <Updater/detail/install/PackageCheck.h>
#include <Updater/detail/install/StagingDirectory.h>
#include <Updater/detail/operations/OperationGate.h>
#include <Updater/detail/operations/StagedReleases.h>
#include <Updater/detail/operations/Uninstaller.h>
#include <Updater/detail/registry/DamageRecord.h>
#include <Updater/detail/registry/FileOwners.h>
#include <Updater/detail/registry/PackageRecords.h>
#include <Updater/detail/registry/RegistryFile.h>
#include <Updater/detail/registry/SharedRegistry.h>
#include <Updater/detail/registry/TrustPin.h>

#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace vo::updater::detail {

namespace {

// What the operations of a process share. Never destroyed: receivers and threads may outlive the static objects.
struct Shared
{
    MessageBroadcaster broadcaster;
    OperationGate gate; // a thread is inside for the whole of an operation
};

Shared& State()
{
    static Shared& shared = *new Shared;
    return shared;
}

// Whether this thread is in the receivers of a message. Starting an operation from there would nest its messages.
thread_local bool isBroadcasting = false;

void Broadcast(const VoSharedPtr<AbstractMessage>& message)
{
    const bool wasBroadcasting = std::exchange(isBroadcasting, true);
    BroadcastGuarded(State().broadcaster, message);
    isBroadcasting = wasBroadcasting;
}

EventReport Events(const VoUUID& packageID, const VoUUID& versionID)
{
    return EventReport(packageID, versionID, Broadcast, &Log(), EventReport::Label::None);
}

// Whoever asked for a check is told what it finds; the log has nothing to say of it.
EventReport Unlogged(const InstalledPackageListing& listing)
{
    return EventReport(listing.packageID(), listing.versionID(), Broadcast, nullptr, EventReport::Label::None);
}

void AnnounceUpdate()
{
    Broadcast(VoSharedPtr<PackagesUpdatedMessage>::Make());
}

// True when the registry has no entry of the package any more.
bool Forget(const VoUUID& packageID)
{
    SharedRegistry& registry = SharedRegistry::Get();
    if (!registry.has(packageID))
        return true;
    const bool isForgotten = registry.erase(packageID);
    if (isForgotten)
        AnnounceUpdate();
    return isForgotten;
}

// Ends what was interrupted on one package.
void RecoverPackage(const VoUUID& packageID)
{
    const VoFilePath removed = RemovedListingPath(packageID);
    if (KindOf(removed) != FileKind::None && Forget(packageID))
        EraseFile(removed);
    Recover(JournalOf(packageID), [](const InstalledPackageListing& listing) {
        const bool isRecorded = RecordInstalled(listing);
        if (isRecorded)
            AnnounceUpdate();
        return isRecorded;
    });
}

// Trouble with one package does not keep the others from being worked on.
void RecoverAll()
{
    for (const VoUUID& id : PackagesWith({".pending", ".placed", ".replaced", RemovedSuffix})) {
        try {
            RecoverPackage(id);
        } catch (...) {
            Log().error("Interrupted operation on package " + id.toString() + " cannot be completed: " + FailureText());
        }
    }
}

void RequireNotBroadcasting()
{
    if (isBroadcasting)
        throw VoInvalidCallException("An installation is already running");
}

// One operation that changes what is installed. Its thread may not begin another: it would wait for itself.
class Operation
{
public:
    Operation()
    {
        RequireNotBroadcasting();
        State().gate.enter();
    }

    ~Operation()
    {
        // Others would find the lock of this process in their way.
        m_processes.reset();
        State().gate.leave();
    }

    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    // Keeps other processes out, learns what they did meanwhile and ends what was interrupted.
    void begin()
    {
        m_processes.emplace(VoUpdater::UpdateSystemDirectory());
        EraseTemporaryDocuments(VoUpdater::InstalledListingDirectory());
        SharedRegistry::Get().readAnew();
        RecoverAll();
    }

    bool hasBegun() const { return m_processes.has_value(); }

private:
    std::optional<ProcessLock> m_processes;
};

// Every failure is one of installing, and is told once.
template <typename Work>
void Attempt(const VoUUID& packageID, const VoUUID& versionID, Work work)
{
    try {
        work();
    } catch (const VoInstallationFailedException&) {
        throw;
    } catch (...) {
        const VoString text = WithText("Installation failed", FailureText());
        Events(packageID, versionID).report(AbstractMessage::InstallationFailed, text);
        throw VoInstallationFailedException(text, std::current_exception());
    }
}

// An operation on the release that a definition tells; until that is read, failures are those of no package.
template <typename Work>
void AttemptWith(const AdvertSource& source, Work work)
{
    Operation operation;
    Attempt(VoUUID(""), VoUUID(""), [&] {
        operation.begin();
        VoUniquePtr<AdvertisedPackageListing> advert = source();
        const VoUUID packageID = advert->packageID();
        const VoUUID versionID = advert->versionID();
        Attempt(packageID, versionID, [&] { work(std::move(advert)); });
    });
}

// The package under its own name alone: another spelling of an installed one would share its records on some volumes.
void RequireOwnName(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    for (const VoPair<VoUUID, VoVersion>& entry : SharedRegistry::Get().packages())
        RequireNoOtherSpelling(packageID, entry.first);
}

// What has been recorded stays so: a list of damaged files that outlives it only lets them be written once more.
void ForgetMended(const VoUUID& packageID)
{
    try {
        ForgetDamage(packageID);
    } catch (...) {
        Log().warning("Record of damaged files is left: " + FailureText());
    }
}

void RunAndRecord(VoUniquePtr<AdvertisedPackageListing> advert, const VoLocation& definition,
                  const VoDirectoryPath& directory, VoUniquePtr<InstalledPackageListing> installed,
                  InstallerSettings settings, const VoStopFlag& stop)
{
    // From before the first look at the directories to the end, however long the download takes.
    const HeldTree after(directory);
    const HeldTree before(installed ? installed->installationDirectory() : VoDirectoryPath());
    bool isSound = true;
    bool isRecorded = false;
    settings.record = [&](const InstalledPackageListing& listing) {
        if (!isSound)
            Log().warning("Package recorded although its verification failed: " + listing.packageID().toString());
        isRecorded = RecordInstalled(listing);
        if (isSound)
            ForgetMended(listing.packageID());
        return isRecorded;
    };
    ConfiguredInstaller installer(std::move(advert), directory, std::move(installed), settings);
    const VoReceiver receiver = installer.connect([&isSound](const VoSharedPtr<AbstractMessage>& message) {
        isSound = isSound && message->type() != AbstractMessage::VerificationFailed;
        Broadcast(message);
    });
    installer.run(definition, stop, settings.options.downloads);
    if (isRecorded)
        AnnounceUpdate();
}

void RemovePackage(const VoUUID& packageID, const VoFilePath& path, const VoStopFlag& stop, const EventReport& events)
{
    RecoverPackage(packageID);
    const InstallationJournal journal = InstallationJournal::OfListing(path);
    VoUniquePtr<InstalledPackageListing> listing;
    if (VoFileSystem::Exists(path))
        listing = OpenInstalled(path);
    else
        events.report(AbstractMessage::PackageDefinitionNotFound,
                      "Package definition file not found for " + packageID.toString());
    Uninstaller(packageID, path, listing.get(), journal, Broadcast).run(stop);
    for (const auto phase : {InstallationJournal::Phase::Pending, InstallationJournal::Phase::Replaced})
        journal.remove(phase);
    StagingDirectory(StagingPath(packageID)).remove();
    if (HasStaged(packageID))
        EraseStaged(packageID, StagedLock());
    ForgetDamage(packageID);
    SeenFiles::Forget(SeenFiles::PlaceOf(path));
    ForgetPin(packageID);
    EraseAttributes(path);
    if (!listing)
        return;
    // Still there under another name until the registry has forgotten the package: so its name finds it.
    MoveAside(path, RemovedListingPath(packageID));
    events.report(AbstractMessage::PackageDefinitionRemoved, "Package definition removed for " + packageID.toString());
}

// Builds and checks the release in its folder; nobody else stages the package meanwhile. The definition comes last,
// when all files are there. Nothing of it counts before WriteStaged has the record, which has the definition's digest:
// a staging that is killed leaves files that the next one takes, and the record of the one before.
void Stage(VoUniquePtr<AdvertisedPackageListing> advert, VoUniquePtr<InstalledPackageListing> installed,
           StagedRelease& staged, const VoStopFlag& stop)
{
    InstallerSettings settings{staged.options};
    settings.staging = StagingChunksPath(staged.packageID());
    settings.staged = staged.folder();
    settings.isStaging = true;
    FindDocuments(*advert, staged.definition, stop, staged.options.downloads);
    const AdvertisedPackageListing kept = *advert;
    ConfiguredInstaller installer(std::move(advert), staged.directory, std::move(installed), settings);
    const VoReceiver receiver = installer.connect(Broadcast);
    installer.stage(staged.definition, stop);
    for (const VoFilePath& path : installer.stagedFiles()) {
        ++staged.files;
        staged.bytes += VoFileSystem::FileSize(path);
    }
    staged.keepDefinition(kept);
}

// What was staged over the former release can never be committed. Trouble with it is that of its commit.
void DropUnfitting(const VoUUID& packageID)
{
    try {
        if (!HasStaged(packageID))
            return;
        const StagedLock lock;
        const auto staged = ReadStaged(packageID);
        if (staged && !staged->fits(FindInstalled(packageID).get()))
            EraseStaged(packageID, lock);
    } catch (const VoException&) {
        Log().warning("What is staged of package " + packageID.toString() + " is left as it is: " + FailureText());
    }
}

// The folder is not believed: what it holds is compared with the record's digests, and whether the release may be
// installed is decided anew. A killed commit left it whole, and this runs again, or had put it in place, which the
// release that is installed now tells; then it is only erased here.
bool Commit(const StagedRelease& staged, const VoStopFlag& stop, const StagedLock& lock)
{
    const VoUUID& packageID = staged.packageID();
    RequireOwnName(packageID);
    RecoverPackage(packageID);
    VoUniquePtr<InstalledPackageListing> installed = FindInstalled(packageID);
    const bool isNews = !staged.isInstalled(installed.get());
    if (isNews) {
        staged.requireFitting(installed.get());
        staged.requireFresh();
        VoUniquePtr<AdvertisedPackageListing> advert = staged.openDefinition();
        AdmitRelease(*advert, staged.options.proof.get(), installed.get());
        InstallerSettings settings{staged.options};
        settings.staging = StagingChunksPath(packageID); // goes with the rest
        settings.staged = staged.folder();
        // From the folder, so that whatever is still looked for is looked for there.
        RunAndRecord(std::move(advert), staged.definitionPath(), staged.directory, std::move(installed),
                     std::move(settings), stop);
    }
    try {
        EraseStaged(packageID, lock);
    } catch (const VoException&) {
        Log().warning("What was staged is left to the next operation on it: " + FailureText());
    }
    return isNews;
}

// Whether a commit that failed so fails for ever.
bool IsHopeless(const std::exception_ptr& cause)
{
    try {
        if (cause)
            std::rethrow_exception(cause);
    } catch (const VoStagedReleaseException&) {
        return true;
    } catch (const VoUntrustedReleaseException&) {
        return true;
    } catch (const VoDamagedContentException&) {
        return true;
    } catch (...) {
        // may pass
    }
    return false;
}

bool TryToCommit(const VoUUID& packageID)
{
    try {
        return CommitPackage(packageID, VoStopFlag());
    } catch (const VoInstallationFailedException& failure) {
        const bool isHopeless = IsHopeless(failure.cause());
        Log().warning("Staged release of package " + packageID.toString() +
                      (isHopeless ? " is dropped: " : " waits: ") + failure.message());
        if (isHopeless)
            DropStagedPackage(packageID);
    }
    return false;
}

// What goes wrong is logged.
template <typename Work>
void AttemptAtStart(Work work)
{
    try {
        work();
    } catch (...) {
        Log().warning("What is staged cannot be put in place now: " + FailureText());
    }
}

} // namespace

StagedInstallation StagePackage(const AdvertSource& source, const VoLocation& definition,
                                const VoDirectoryPath& directory, const VoStopFlag& stop,
                                const InstallationOptions& options)
{
    RequireNotBroadcasting();
    StagedInstallation result;
    Attempt(VoUUID(""), VoUUID(""), [&] {
        VoUniquePtr<AdvertisedPackageListing> advert = source();
        const VoUUID packageID = advert->packageID();
        const VoUUID versionID = advert->versionID();
        Attempt(packageID, versionID, [&] {
            RequireOwnName(packageID);
            const StagingLock lock(packageID);
            if (!lock.isHeld())
                throw VoFileLockedException(StagingChunksPath(packageID).parent().path());
            VoUniquePtr<InstalledPackageListing> installed = FindInstalled(packageID);
            RequireAdmissible(*advert, options.proof.get(), installed.get());
            StagedRelease staged(*advert, installed.get());
            staged.directory = AbsoluteDirectory(directory);
            staged.definition = definition;
            staged.options = options;
            Stage(std::move(advert), std::move(installed), staged, stop);
            WriteStaged(staged, StagedLock());
            result = staged.summary();
            Events(packageID, versionID)
                .report(AbstractMessage::StagingComplete, "Staged release " + staged.version().toString());
        });
    });
    return result;
}

bool CommitPackage(const VoUUID& packageID, const VoStopFlag& stop)
{
    RequireSafeIdentifier(packageID);
    bool isNews = false;
    Operation operation;
    Attempt(packageID, VoUUID(""), [&] {
        operation.begin();
        const StagedLock lock;
        const std::optional<StagedRelease> staged = ReadStaged(packageID);
        if (!staged)
            throw VoStagedReleaseException("No release is staged of package " + packageID.toString());
        Attempt(packageID, staged->versionID(), [&] { isNews = Commit(*staged, stop, lock); });
    });
    return isNews;
}

VoDeque<StagedInstallation> ListStaged()
{
    VoDeque<StagedInstallation> result;
    for (const VoUUID& packageID : StagedPackages()) {
        try {
            if (const auto staged = ReadStaged(packageID))
                result.pushBack(staged->summary());
        } catch (const VoException&) {
            Log().warning(FailureText());
        }
    }
    return result;
}

bool DropStagedPackage(const VoUUID& packageID)
{
    RequireNotBroadcasting();
    return HasStaged(packageID) && EraseStaged(packageID, StagedLock());
}

VoReceiver ConnectToOperations(MessageReceiver callback)
{
    return State().broadcaster.connect(std::move(callback));
}

void InstallPackage(const AdvertSource& source, const VoLocation& definition, const VoDirectoryPath& directory,
                    const VoStopFlag& stop, const InstallationOptions& options)
{
    AttemptWith(source, [&](VoUniquePtr<AdvertisedPackageListing> advert) {
        const VoUUID packageID = advert->packageID();
        RequireOwnName(packageID);
        RecoverPackage(packageID);
        VoUniquePtr<InstalledPackageListing> installed = FindInstalled(packageID);
        AdmitRelease(*advert, options.proof.get(), installed.get());
        RunAndRecord(std::move(advert), definition, AbsoluteDirectory(directory), std::move(installed),
                     InstallerSettings{options}, stop);
        DropUnfitting(packageID);
    });
}

VerificationReport VerifyPackage(const VoUUID& packageID, const VoStopFlag& stop)
{
    const auto listing = OpenInstalled(ListingPath(packageID));
    FileOwners owners = FileOwners::Others(packageID, {listing->installationDirectory()});
    return CheckPackage(*listing, owners, stop, Unlogged(*listing)).report;
}

VerificationReport RepairPackage(const VoLocation& definition, const VoStopFlag& stop,
                                 const VoDownloadPolicy& downloads)
{
    VerificationReport report;
    const auto open = [&] { return AdvertisedPackageListing::Open(definition, stop, downloads); };
    AttemptWith(open, [&](VoUniquePtr<AdvertisedPackageListing> advert) {
        const VoUUID packageID = advert->packageID();
        RecoverPackage(packageID);
        if (!VoFileSystem::Exists(ListingPath(packageID)))
            throw VoNotFoundException(packageID.toString());
        VoUniquePtr<InstalledPackageListing> installed = OpenInstalled(ListingPath(packageID));
        if (installed->versionID() != advert->versionID())
            throw VoInvalidParameterException("Definition is not that of the installed release: " +
                                              definition.toString());
        AdmitRepair(*advert, *installed);
        // As recorded: nobody has verified what stands beside the definition now.
        advert->setAttributes(installed->attributes() ? installed->attributes()
                                                      : std::make_shared<const ReleaseAttributes>());
        FileOwners owners = FileOwners::Others(packageID, {installed->installationDirectory()});
        PackageCheck check = CheckPackage(*installed, owners, stop, Unlogged(*installed));
        report = check.report;
        if (report.isIntact() && !IsUnfinished(packageID, installed.get()))
            return;
        InstallerSettings settings;
        settings.options.downloads = downloads;
        settings.options.examineAll = true;
        settings.damaged = std::move(check.damaged);
        const VoDirectoryPath directory = installed->installationDirectory();
        RunAndRecord(std::move(advert), definition, directory, std::move(installed), std::move(settings), stop);
    });
    return report;
}

void UninstallPackage(const VoUUID& packageID, const VoStopFlag& stop)
{
    const VoFilePath path = ListingPath(packageID);
    Operation operation;
    const EventReport events = Events(packageID, VoUUID(""));
    events.report(AbstractMessage::UninstallStarted, "Uninstall requested for " + packageID.toString());
    try {
        if (VoFileSystem::IsDirectory(VoUpdater::UpdateSystemDirectory()))
            operation.begin();
        RemovePackage(packageID, path, stop, events);
        if (operation.hasBegun() && Forget(packageID))
            EraseFile(RemovedListingPath(packageID));
    } catch (...) {
        Broadcast(VoSharedPtr<UninstallFailedMessage>::Make(FailureText(), packageID));
        throw;
    }
    events.report(AbstractMessage::UninstallComplete, VoString());
}

} // namespace vo::updater::detail

namespace vo::updater {

bool CommitPending()
{
    using namespace detail;
    bool isNews = false;
    AttemptAtStart([&] {
        for (const VoUUID& packageID : StagedPackages())
            AttemptAtStart([&] { isNews = TryToCommit(packageID) || isNews; });
    });
    return isNews;
}

} // namespace vo::updater
