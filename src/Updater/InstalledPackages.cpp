#include <Updater/InstalledPackages.h>

#include <Core/VoFileException.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/PackageInstaller.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/operations/Operations.h>
#include <Updater/detail/registry/PackageRecords.h>
#include <Updater/detail/registry/SharedRegistry.h>

#include <algorithm>
#include <utility>

namespace vo::updater {

using namespace detail;

struct InstalledPackages::Private
{
    Registry registry;
};

InstalledPackages::InstalledPackages()
    : m_private(std::make_unique<Private>())
{
}

InstalledPackages::InstalledPackages(VoXMLStreamElementLoader& element)
    : m_private(new Private{Registry(element)})
{
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
    return m_private->registry.objectType();
}

void InstalledPackages::writeElements(VoXMLElementWriter& element) const
{
    m_private->registry.writeElements(element);
}

VoReceiver InstalledPackages::Connect(std::function<void(const VoSharedPtr<AbstractMessage>&)> callback)
{
    return ConnectToOperations(std::move(callback));
}

VoFilePath InstalledPackages::InstalledPackageListingPath(const VoUUID& packageID)
{
    return ListingPath(packageID);
}

VoUniquePtr<InstalledPackageListing> InstalledPackages::Package(const VoUUID& packageID)
{
    return OpenInstalled(ListingPath(packageID));
}

VoDeque<VoPair<VoUUID, VoVersion>> InstalledPackages::Packages()
{
    return SharedRegistry::Get().packages();
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
            return detail::IsUnfinished(packageID, Package(packageID).get());
    } catch (const VoFileException&) {
        throw;
    } catch (const VoException&) {
        return true; // a listing that is none
    }
    return detail::IsUnfinished(packageID, nullptr);
}

InstallationPlan InstalledPackages::Plan(const VoFilePath& definitionFile, const VoDirectoryPath& installationDirectory,
                                         const InstallationOptions& options)
{
    VoUniquePtr<AdvertisedPackageListing> advert = AdvertisedPackageListing::Open(definitionFile);
    FindDocuments(*advert, definitionFile, VoStopFlag(), options.downloads);
    return Plan(std::move(advert), installationDirectory, options);
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
    Install(VoLocation(definitionFile), installationDirectory, stop, options);
}

void InstalledPackages::Install(const VoUrl& advertUrl, const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                const InstallationOptions& options)
{
    Install(VoLocation(advertUrl), installationDirectory, stop, options);
}

void InstalledPackages::Install(const VoLocation& definition, const VoDirectoryPath& installationDirectory,
                                VoStopFlag stop, const InstallationOptions& options)
{
    const auto open = [&] { return AdvertisedPackageListing::Open(definition, stop, options.downloads); };
    InstallPackage(open, definition, installationDirectory, stop, options);
}

void InstalledPackages::Install(VoUniquePtr<AdvertisedPackageListing> advert, const VoLocation& definition,
                                const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                const InstallationOptions& options)
{
    InstallPackage([&] { return std::move(advert); }, definition, installationDirectory, stop, options);
}

StagedInstallation InstalledPackages::Stage(const VoLocation& definition, const VoDirectoryPath& installationDirectory,
                                            VoStopFlag stop, const InstallationOptions& options)
{
    const auto open = [&] { return AdvertisedPackageListing::Open(definition, stop, options.downloads); };
    return StagePackage(open, definition, installationDirectory, stop, options);
}

StagedInstallation InstalledPackages::Stage(VoUniquePtr<AdvertisedPackageListing> advert, const VoLocation& definition,
                                            const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                            const InstallationOptions& options)
{
    return StagePackage([&] { return std::move(advert); }, definition, installationDirectory, stop, options);
}

bool InstalledPackages::Commit(const VoUUID& packageID, VoStopFlag stop)
{
    return CommitPackage(packageID, stop);
}

VoDeque<StagedInstallation> InstalledPackages::Staged()
{
    return ListStaged();
}

bool InstalledPackages::DropStaged(const VoUUID& packageID)
{
    return DropStagedPackage(packageID);
}

VerificationReport InstalledPackages::Verify(const VoUUID& packageID, VoStopFlag stop)
{
    return VerifyPackage(packageID, stop);
}

VerificationReport InstalledPackages::Repair(const VoLocation& definition, VoStopFlag stop,
                                             const VoDownloadPolicy& downloads)
{
    return RepairPackage(definition, stop, downloads);
}

void InstalledPackages::Uninstall(const VoUUID& packageID)
{
    Uninstall(packageID, VoStopFlag());
}

void InstalledPackages::Uninstall(const VoUUID& packageID, VoStopFlag stop)
{
    UninstallPackage(packageID, stop);
}

} // namespace vo::updater
