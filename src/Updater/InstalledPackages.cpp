#include <Updater/InstalledPackages.h>

#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoUrl.h>
#include <FileSystem/detail/NativePath.h>
#include <FileSystem/detail/SafePath.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>
#include <Updater/PackageInstaller.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/Containment.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/install/FileActions.h>
#include <Updater/detail/install/FileOwners.h>
#include <Updater/detail/install/InstallationJournal.h>
#include <Updater/detail/install/InstallerPrivate.h>
#include <Updater/detail/install/InstallerSettings.h>
#include <Updater/detail/install/PackageCheck.h>
#include <Updater/detail/install/StagingDirectory.h>
#include <Updater/detail/registry/DamageRecord.h>
#include <Updater/detail/registry/OperationGate.h>
#include <Updater/detail/registry/RegistryFile.h>
#include <Updater/detail/registry/TrustPin.h>
#include <Updater/detail/registry/Uninstaller.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace vo::updater {

using namespace detail;

struct InstalledPackages::Private
{
    VoDeque<VoPair<VoUUID, VoVersion>> entries; // in the order of first installation
};

// What the process shares. A thread is inside the gate for the whole of an installation; whatever its receivers may
// call takes the data mutex alone, for moments.
struct InstalledPackages::Shared
{
    MessageBroadcaster broadcaster;

    OperationGate gate;

    std::mutex data; // guards what follows
    VoUniquePtr<InstalledPackages> registry;
    VoFilePath readFrom;
};

namespace {

// Whether this thread is in the receivers of a message. Starting an operation from there would nest its messages.
thread_local bool isBroadcasting = false;

} // namespace

// One operation that changes what is installed. Its thread may not begin another: it would wait for itself.
struct InstalledPackages::Operation
{
    Operation()
    {
        if (isBroadcasting)
            throw VoInvalidCallException("An installation is already running");
        State().gate.enter();
    }

    ~Operation()
    {
        // Others would find the lock of this process in their way.
        processes.reset();
        State().gate.leave();
    }

    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    // Keeps other processes out and learns what they did meanwhile.
    void begin()
    {
        processes.emplace(VoUpdater::UpdateSystemDirectory());
        EraseTemporaryDocuments(VoUpdater::InstalledListingDirectory());
        {
            const std::lock_guard<std::mutex> guard(State().data);
            State().registry.reset();
            Get();
        }
        RecoverAll();
    }

    std::optional<ProcessLock> processes;
};

namespace {

vo::logging::Logger& Log()
{
    return vo::logging::Logger::Get("updater");
}

// Versions are read leniently everywhere; only a registry that was damaged has texts without any number in them.
bool IsVersionText(const VoString& text)
{
    const std::string_view bytes(text.c_str(), text.size());
    return !bytes.empty() && bytes.find_first_not_of("0123456789.-") == std::string_view::npos;
}

StagingDirectory StagingOf(const VoUUID& packageID)
{
    return StagingDirectory(VoUpdater::DownloadDirectory().directory(packageID.toString()));
}

InstallationJournal JournalOf(const VoUUID& packageID)
{
    return InstallationJournal::OfListing(InstalledPackages::InstalledPackageListingPath(packageID));
}

// What the listing of a package is called from when its files are gone until the registry has forgotten it.
constexpr std::string_view RemovedSuffix = ".removed";

VoFilePath RemovedPath(const VoUUID& packageID)
{
    return VoUpdater::InstalledListingDirectory().file(packageID.toString() + VoString(std::string(RemovedSuffix)));
}

bool EndsWith(std::string_view text, std::string_view suffix)
{
    return text.size() > suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

// The packages that have a document with one of the suffixes in the directory of the listings.
VoDeque<VoUUID> PackagesWith(std::initializer_list<std::string_view> suffixes)
{
    VoDeque<VoUUID> result;
    const VoDirectoryPath directory = VoUpdater::InstalledListingDirectory();
    if (!VoFileSystem::IsDirectory(directory))
        return result;
    VoFileSystem::ForEachFile(directory, false, false, [&](const VoFilePath& path) {
        const std::string_view name = Bytes(path).substr(Bytes(directory).size());
        for (const std::string_view suffix : suffixes) {
            if (!EndsWith(name, suffix))
                continue;
            const VoUUID id{VoString(std::string(name.substr(0, name.size() - suffix.size())))};
            const bool isKnown =
                std::any_of(result.begin(), result.end(), [&id](const VoUUID& known) { return known == id; });
            if (!isKnown && vo::detail::SafeName(id.toString()) && id != VoUUID("packages"))
                result.pushBack(id);
        }
    });
    return result;
}

// The name that a document of a package gives it; empty when none tells.
VoString NameOf(const VoUUID& packageID)
{
    for (const VoFilePath& path : {InstalledPackages::InstalledPackageListingPath(packageID), RemovedPath(packageID)}) {
        try {
            if (VoFileSystem::Exists(path))
                return InstalledPackageListing::Open(path)->name();
        } catch (const VoException&) {
            // Reading it has logged why; such a package is still known by its ID.
        }
    }
    for (const auto phase : {InstallationJournal::Phase::Pending, InstallationJournal::Phase::Placed}) {
        try {
            if (const auto notes = JournalOf(packageID).read(phase))
                return notes->result.name();
        } catch (const VoException&) {
        }
    }
    return VoString();
}

VoDirectoryPath AbsoluteDirectory(const VoDirectoryPath& directory)
{
    if (directory.isNull())
        throw VoInvalidParameterException("No installation directory given");
    if (directory.isRooted())
        return directory;
    std::error_code error;
    const std::filesystem::path current = std::filesystem::current_path(error);
    if (error)
        throw vo::detail::Because(error,
                                  VoFileException("current_path: " + VoString(error.message()), directory.path()));
    return VoDirectoryPath::FromText(vo::detail::FromNative(current).path()).appended(directory);
}

} // namespace

InstalledPackages::InstalledPackages()
    : m_private(std::make_unique<Private>())
{
}

InstalledPackages::InstalledPackages(VoXMLStreamElementLoader& element)
    : InstalledPackages()
{
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        if (child.name() != tag::Package)
            return;
        const VoString id = child.attribute(attribute::Id, VoString());
        const VoString version = child.attribute(attribute::Version, VoString());
        if (!vo::detail::SafeName(id) || !IsVersionText(version)) {
            Log().warning("Entry of the installed packages file skipped: id " + id + ", version " + version);
            return;
        }
        set(id, VoVersion::Deserialize(version));
    });
}

InstalledPackages::InstalledPackages(const InstalledPackages& other)
    : XMLObject(other)
    , m_private(std::make_unique<Private>(*other.m_private))
{
}

InstalledPackages& InstalledPackages::operator=(const InstalledPackages& other)
{
    *m_private = Private(*other.m_private);
    return *this;
}

InstalledPackages::~InstalledPackages() = default;

XMLObject::Type InstalledPackages::objectType() const
{
    return Type::InstalledPackages;
}

void InstalledPackages::writeElements(VoXMLElementWriter& element) const
{
    for (const VoPair<VoUUID, VoVersion>& entry : m_private->entries) {
        const auto child = element.createElement(tag::Package);
        WriteAttribute(*child, attribute::Id, entry.first);
        WriteAttribute(*child, attribute::Version, entry.second);
    }
}

void InstalledPackages::set(const VoUUID& packageID, const VoVersion& version)
{
    for (VoPair<VoUUID, VoVersion>& entry : m_private->entries) {
        if (entry.first == packageID) {
            entry.second = version;
            return;
        }
    }
    m_private->entries.pushBack({packageID, version});
}

bool InstalledPackages::erase(const VoUUID& packageID)
{
    auto& entries = m_private->entries;
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const VoPair<VoUUID, VoVersion>& candidate) {
        return candidate.first == packageID;
    });
    if (entry == entries.end())
        return false;
    entries.erase(entry);
    return true;
}

InstalledPackages::Shared& InstalledPackages::State()
{
    // Never destroyed: receivers and threads may outlive the static objects.
    static Shared& shared = *new Shared;
    return shared;
}

// With the data mutex held.
InstalledPackages& InstalledPackages::Get()
{
    const VoFilePath path = VoUpdater::InstalledPackagesPath();
    Shared& shared = State();
    if (!shared.registry || Bytes(shared.readFrom) != Bytes(path)) {
        VoString whyNot;
        shared.registry = ReadRegistry(path, whyNot);
        shared.readFrom = path;
        if (!shared.registry)
            throw vo::detail::Completed(VoNullPointerException("VoUniquePtr dereferencing nullptr"), path.path(),
                                        whyNot);
    }
    return *shared.registry;
}

void InstalledPackages::Broadcast(const VoSharedPtr<AbstractMessage>& message)
{
    const bool wasBroadcasting = std::exchange(isBroadcasting, true);
    BroadcastGuarded(State().broadcaster, message);
    isBroadcasting = wasBroadcasting;
}

EventReport InstalledPackages::Events(const VoUUID& packageID, const VoUUID& versionID)
{
    return EventReport(packageID, versionID, Broadcast, &Log(), EventReport::Label::None);
}

// Whoever asked for a check is told what it finds; the log has nothing to say of it.
EventReport InstalledPackages::Unlogged(const InstalledPackageListing& listing)
{
    return EventReport(listing.packageID(), listing.versionID(), Broadcast, nullptr, EventReport::Label::None);
}

VoReceiver InstalledPackages::Connect(std::function<void(const VoSharedPtr<AbstractMessage>&)> callback)
{
    return State().broadcaster.connect(std::move(callback));
}

VoDeque<VoPair<VoUUID, VoVersion>> InstalledPackages::Packages()
{
    const std::lock_guard<std::mutex> guard(State().data);
    return Get().m_private->entries;
}

VoFilePath InstalledPackages::InstalledPackageListingPath(const VoUUID& packageID)
{
    RequireSafeIdentifier(packageID);
    return VoUpdater::InstalledListingDirectory().file(packageID.toString() + ".xml");
}

VoUniquePtr<InstalledPackageListing> InstalledPackages::Package(const VoUUID& packageID)
{
    return InstalledPackageListing::Open(InstalledPackageListingPath(packageID));
}

VoDeque<VoPair<VoUUID, VoString>> InstalledPackages::Names()
{
    VoDeque<VoUUID> ids;
    for (const VoPair<VoUUID, VoVersion>& entry : Packages())
        ids.pushBack(entry.first);
    for (const VoUUID& id : PackagesWith({".xml", RemovedSuffix, ".pending", ".placed"})) {
        if (std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.pushBack(id);
    }
    VoDeque<VoPair<VoUUID, VoString>> result;
    for (const VoUUID& id : ids)
        result.pushBack({id, NameOf(id)});
    return result;
}

bool InstalledPackages::IsUnfinished(const VoUUID& packageID)
{
    try {
        if (VoFileSystem::Exists(InstalledPackageListingPath(packageID)))
            return IsUnfinished(packageID, Package(packageID).get());
    } catch (const VoFileException&) {
        throw;
    } catch (const VoException&) {
        return true; // a listing that is none
    }
    return IsUnfinished(packageID, nullptr);
}

bool InstalledPackages::IsUnfinished(const VoUUID& packageID, const InstalledPackageListing* installed)
{
    if (JournalOf(packageID).exists() || HasDamageRecord(packageID) ||
        KindOf(RemovedPath(packageID)) != FileKind::None || VoFileSystem::Exists(StagingOf(packageID).path()))
        return true;
    // As it stands on disk: another process may have ended what this one knows of.
    VoString whyNot;
    const VoUniquePtr<InstalledPackages> registry = ReadRegistry(VoUpdater::InstalledPackagesPath(), whyNot);
    if (!registry)
        return true;
    for (const VoPair<VoUUID, VoVersion>& entry : registry->m_private->entries) {
        if (entry.first == packageID)
            return !installed || installed->version().toString() != entry.second.toString();
    }
    return installed != nullptr;
}

// Trouble with one package does not keep the others from being worked on.
void InstalledPackages::RecoverAll()
{
    for (const VoUUID& id : PackagesWith({".pending", ".placed", ".replaced", RemovedSuffix})) {
        try {
            Recover(id);
        } catch (...) {
            Log().error("Interrupted operation on package " + id.toString() + " cannot be completed: " + FailureText());
        }
    }
}

void InstalledPackages::Recover(const VoUUID& packageID)
{
    const VoFilePath removed = RemovedPath(packageID);
    if (KindOf(removed) != FileKind::None && Forget(packageID))
        EraseFile(removed);
    detail::Recover(JournalOf(packageID), [](const InstalledPackageListing& listing) {
        if (!Record(listing))
            return false;
        Broadcast(VoSharedPtr<PackagesUpdatedMessage>::Make());
        return true;
    });
}

InstallationPlan InstalledPackages::Plan(const VoFilePath& definitionFile, const VoDirectoryPath& installationDirectory,
                                         const InstallationOptions& options)
{
    return Plan(AdvertisedPackageListing::Open(definitionFile), installationDirectory, options);
}

InstallationPlan InstalledPackages::Plan(const AdvertisedPackageListing& advert,
                                         const VoDirectoryPath& installationDirectory,
                                         const InstallationOptions& options)
{
    return Plan(VoUniquePtr<AdvertisedPackageListing>::Make(advert), installationDirectory, options);
}

InstallationPlan InstalledPackages::Plan(VoUniquePtr<AdvertisedPackageListing> advert,
                                         const VoDirectoryPath& installationDirectory,
                                         const InstallationOptions& options)
{
    return PackageInstaller(std::move(advert), AbsoluteDirectory(installationDirectory), options).plan();
}

void InstalledPackages::Install(const VoFilePath& definitionFile, const VoDirectoryPath& installationDirectory,
                                VoStopFlag stop, const InstallationOptions& options)
{
    Operation operation;
    Attempt([&] {
        operation.begin();
        Install(AdvertisedPackageListing::Open(definitionFile), installationDirectory, options,
                [&](PackageInstaller& installer) { return installer.run(definitionFile, stop); });
    });
}

void InstalledPackages::Install(const VoUrl& advertUrl, const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                const InstallationOptions& options)
{
    Operation operation;
    Attempt([&] {
        operation.begin();
        Install(AdvertisedPackageListing::Open(advertUrl, stop, options.downloads), installationDirectory, options,
                [&](PackageInstaller& installer) { return installer.run(advertUrl, stop, options.downloads); });
    });
}

void InstalledPackages::Install(VoUniquePtr<AdvertisedPackageListing> advert, const VoFilePath& definitionFile,
                                const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                const InstallationOptions& options)
{
    Operation operation;
    Attempt([&] {
        operation.begin();
        Install(std::move(advert), installationDirectory, options,
                [&](PackageInstaller& installer) { return installer.run(definitionFile, stop); });
    });
}

void InstalledPackages::Install(VoUniquePtr<AdvertisedPackageListing> advert, const VoUrl& advertUrl,
                                const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                const InstallationOptions& options)
{
    Operation operation;
    Attempt([&] {
        operation.begin();
        Install(std::move(advert), installationDirectory, options,
                [&](PackageInstaller& installer) { return installer.run(advertUrl, stop, options.downloads); });
    });
}

void InstalledPackages::Install(VoUniquePtr<AdvertisedPackageListing> advert,
                                const VoDirectoryPath& installationDirectory, const InstallationOptions& options,
                                const Run& run)
{
    const VoUUID packageID = advert->packageID();
    const VoUUID versionID = advert->versionID();
    const auto work = [&] {
        RequireSafeIdentifier(packageID);
        RequireNoOtherSpelling(packageID);
        Recover(packageID);
        VoUniquePtr<InstalledPackageListing> installed = PackageInstaller::FindInstalled(packageID);
        AdmitRelease(*advert, options.proof.get(), installed.get());
        RunAndRecord(std::move(advert), AbsoluteDirectory(installationDirectory), std::move(installed),
                     PackageInstaller::SettingsOf(options), run);
    };
    Attempt(work, packageID, versionID);
}

// Two IDs that differ in letter case alone would share one listing where file names ignore case.
void InstalledPackages::RequireNoOtherSpelling(const VoUUID& packageID)
{
    for (const VoPair<VoUUID, VoVersion>& entry : Packages()) {
        if (entry.first != packageID && Bytes(FoldedName(entry.first)) == Bytes(FoldedName(packageID)))
            throw VoValidationException("Invalid identifier: " + packageID.toString());
    }
}

void InstalledPackages::RunAndRecord(VoUniquePtr<AdvertisedPackageListing> advert, const VoDirectoryPath& directory,
                                     VoUniquePtr<InstalledPackageListing> installed, InstallerSettings settings,
                                     const Run& run)
{
    bool isSound = true;
    bool isRecorded = false;
    settings.record = [&](const InstalledPackageListing& listing) {
        if (!isSound)
            Log().warning("Package recorded although its verification failed: " + listing.packageID().toString());
        isRecorded = Record(listing);
        if (isSound)
            ForgetDamage(listing.packageID());
        return isRecorded;
    };
    PackageInstaller installer(std::move(advert), directory, std::move(installed), settings);
    const VoReceiver receiver = installer.connect([&isSound](const VoSharedPtr<AbstractMessage>& message) {
        isSound = isSound && message->type() != AbstractMessage::VerificationFailed;
        Broadcast(message);
    });
    run(installer);
    if (isRecorded)
        Broadcast(VoSharedPtr<PackagesUpdatedMessage>::Make());
}

// The listing first: should the process end before the registry is written, the next operation does both again.
bool InstalledPackages::Record(const InstalledPackageListing& listing)
{
    const VoFilePath path = InstalledPackageListingPath(listing.packageID());
    VoFileSystem::CreateDirectory(path.parent(), true);
    AtStep(FileStep::WriteDocument, path.path());
    listing.write(path);
    return Update(listing);
}

bool InstalledPackages::Update(const InstalledPackageListing& listing)
{
    std::unique_lock<std::mutex> guard(State().data);
    Get().set(listing.packageID(), listing.version());
    const InstalledPackages registry = Get();
    guard.unlock();
    return Write(registry);
}

bool InstalledPackages::Write(const InstalledPackages& registry)
{
    const VoFilePath path = VoUpdater::InstalledPackagesPath();
    try {
        AtStep(FileStep::WriteDocument, path.path());
        WriteDocument(path, tag::Packages, registry);
        return true;
    } catch (...) {
        Log().error("Installed packages file cannot be updated " + path.path() + ": " + FailureText());
        return false;
    }
}

void InstalledPackages::Attempt(const std::function<void()>& work)
{
    Attempt(work, VoUUID(""), VoUUID(""));
}

void InstalledPackages::Attempt(const std::function<void()>& work, const VoUUID& packageID, const VoUUID& versionID)
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

VerificationReport InstalledPackages::Verify(const VoUUID& packageID, VoStopFlag stop)
{
    const VoUniquePtr<InstalledPackageListing> listing = Package(packageID);
    FileOwners owners = FileOwners::Others(packageID, {listing->installationDirectory()});
    return CheckPackage(*listing, owners, stop, Unlogged(*listing)).report;
}

VerificationReport InstalledPackages::Repair(const VoFilePath& definitionFile, VoStopFlag stop)
{
    Operation operation;
    VerificationReport report;
    Attempt([&] {
        operation.begin();
        report = Repair(AdvertisedPackageListing::Open(definitionFile), definitionFile.path(), stop,
                        [&](PackageInstaller& installer) { return installer.run(definitionFile, stop); });
    });
    return report;
}

VerificationReport InstalledPackages::Repair(const VoUrl& advertUrl, VoStopFlag stop)
{
    return Repair(advertUrl, std::move(stop), VoDownloadPolicy());
}

VerificationReport InstalledPackages::Repair(const VoUrl& advertUrl, VoStopFlag stop, const VoDownloadPolicy& downloads)
{
    Operation operation;
    VerificationReport report;
    Attempt([&] {
        operation.begin();
        report = Repair(AdvertisedPackageListing::Open(advertUrl, stop, downloads), advertUrl.toString(), stop,
                        [&](PackageInstaller& installer) { return installer.run(advertUrl, stop, downloads); });
    });
    return report;
}

VerificationReport InstalledPackages::Repair(VoUniquePtr<AdvertisedPackageListing> advert, const VoString& place,
                                             const VoStopFlag& stop, const Run& run)
{
    const VoUUID packageID = advert->packageID();
    const VoUUID versionID = advert->versionID();
    VerificationReport report;
    const auto work = [&] {
        Recover(packageID);
        if (!VoFileSystem::Exists(InstalledPackageListingPath(packageID)))
            throw VoNotFoundException(packageID.toString());
        VoUniquePtr<InstalledPackageListing> installed = Package(packageID);
        if (installed->versionID() != versionID)
            throw VoInvalidParameterException("Definition is not that of the installed release: " + place);
        AdmitRepair(*advert, *installed);
        FileOwners owners = FileOwners::Others(packageID, {installed->installationDirectory()});
        PackageCheck check = CheckPackage(*installed, owners, stop, Unlogged(*installed));
        report = check.report;
        if (report.isIntact() && !IsUnfinished(packageID, installed.get()))
            return;
        InstallerSettings settings;
        settings.damaged = check.damaged;
        const VoDirectoryPath directory = installed->installationDirectory();
        RunAndRecord(std::move(advert), directory, std::move(installed), settings, run);
    };
    Attempt(work, packageID, versionID);
    return report;
}

void InstalledPackages::Uninstall(const VoUUID& packageID)
{
    Uninstall(packageID, VoStopFlag());
}

void InstalledPackages::Uninstall(const VoUUID& packageID, VoStopFlag stop)
{
    const VoFilePath path = InstalledPackageListingPath(packageID);
    Operation operation;
    const EventReport events = Events(packageID, VoUUID(""));
    events.report(AbstractMessage::UninstallStarted, "Uninstall requested for " + packageID.toString());
    try {
        if (VoFileSystem::IsDirectory(VoUpdater::UpdateSystemDirectory()))
            operation.begin();
        RemovePackage(packageID, path, stop, events);
        if (operation.processes && Forget(packageID))
            EraseFile(RemovedPath(packageID));
    } catch (...) {
        Broadcast(VoSharedPtr<UninstallFailedMessage>::Make(FailureText(), packageID));
        throw;
    }
    events.report(AbstractMessage::UninstallComplete, VoString());
}

void InstalledPackages::RemovePackage(const VoUUID& packageID, const VoFilePath& path, const VoStopFlag& stop,
                                      const EventReport& events)
{
    Recover(packageID);
    const InstallationJournal journal = InstallationJournal::OfListing(path);
    VoUniquePtr<InstalledPackageListing> listing;
    if (VoFileSystem::Exists(path)) {
        listing = InstalledPackageListing::Open(path);
    } else {
        events.report(AbstractMessage::PackageDefinitionNotFound,
                      "Package definition file not found for " + packageID.toString());
    }
    Uninstaller(packageID, path, listing.get(), journal, Broadcast).run(stop);
    for (const auto phase : {InstallationJournal::Phase::Pending, InstallationJournal::Phase::Replaced})
        journal.remove(phase);
    StagingOf(packageID).remove();
    ForgetDamage(packageID);
    ForgetPin(packageID);
    if (!listing)
        return;
    // Still there under another name until the registry has forgotten the package: so its name finds it.
    MoveAside(path, RemovedPath(packageID));
    events.report(AbstractMessage::PackageDefinitionRemoved, "Package definition removed for " + packageID.toString());
}

// True when the registry has no entry of the package any more.
bool InstalledPackages::Forget(const VoUUID& packageID)
{
    std::unique_lock<std::mutex> guard(State().data);
    if (!Get().erase(packageID))
        return true;
    const InstalledPackages registry = Get();
    guard.unlock();
    if (!Write(registry))
        return false;
    Broadcast(VoSharedPtr<PackagesUpdatedMessage>::Make());
    return true;
}

} // namespace vo::updater
