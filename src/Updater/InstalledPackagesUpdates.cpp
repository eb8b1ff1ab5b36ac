#include <Updater/InstalledPackages.h>

#include <Core/VoException.h>
#include <Updater/TrustedReleases.h>

#include <utility>

namespace vo::updater {

namespace {

// A release that was published anew under its number is an update as well.
bool IsUpdate(const AbstractPackage& offered, const InstalledPackageListing& installed)
{
    return offered.version() > installed.version() ||
           (offered.version() == installed.version() && offered.versionID() != installed.versionID());
}

PackageSource RequiredSource(const VoUUID& packageID)
{
    auto source = PackageSources::Recorded(packageID);
    if (!source)
        throw VoInvalidCallException("it is not recorded where the package was installed from");
    return *std::move(source);
}

TrustedReleases OpenDeclared(const VoLocation& document, const TrustPolicy& policy, VoStopFlag stop,
                             const VoDownloadPolicy& downloads)
{
    auto releases = TrustedReleases::Open(document, policy, stop, downloads);
    if (releases.declarations() == nullptr)
        throw VoValidationException("Not a declarations file: " + document.withoutUser().toString());
    return releases;
}

void LookForUpdate(PackageUpdate& update, const TrustPolicy& policy, VoStopFlag stop, const VoDownloadPolicy& downloads)
{
    const auto installed = InstalledPackages::Package(update.packageID);
    update.name = installed->name();
    update.installed = installed->version();
    update.source = RequiredSource(update.packageID);
    const VoLocation document = update.source->declared();
    const TrustedReleases releases = OpenDeclared(document, policy, stop, downloads);
    const AdvertisedPackages::Declaration& newest = releases.newest(update.packageID);
    if (!IsUpdate(newest, *installed))
        return;
    update.available = newest.version();
    update.source = PackageSource{newest.definition(document), document};
}

} // namespace

PackageUpdate InstalledPackages::UpdatesAvailable(const VoUUID& packageID, VoStopFlag stop, const TrustPolicy& policy,
                                                  const VoDownloadPolicy& downloads)
{
    PackageUpdate update;
    update.packageID = packageID;
    try {
        LookForUpdate(update, policy, stop, downloads);
    } catch (const VoUserCancelledException&) {
        throw;
    } catch (const VoException& failure) {
        stop.throwIfStopped();
        update.failure = failure.message();
    }
    return update;
}

void InstalledPackages::Update(const VoUUID& packageID, VoStopFlag stop, const TrustPolicy& policy,
                               const InstallationOptions& options)
{
    const VoDirectoryPath directory = Package(packageID)->installationDirectory();
    const VoLocation declarations = RequiredSource(packageID).declared();
    const TrustedReleases releases = OpenDeclared(declarations, policy, stop, options.downloads);
    TrustedReleases::Release release = releases.open(releases.newest(packageID));
    InstallationOptions ofUpdate = options;
    ofUpdate.refuseOlder = true;
    ofUpdate.proof = std::move(release.proof);
    Install(std::move(release.package), release.definition, directory, stop, ofUpdate);
    PackageSources::Record(packageID, {release.definition, declarations});
}

VoDeque<PackageUpdate> InstalledPackages::UpdatesAvailable(VoStopFlag stop, const TrustPolicy& policy,
                                                           const VoDownloadPolicy& downloads)
{
    VoDeque<PackageUpdate> updates;
    for (const VoPair<VoUUID, VoVersion>& package : Packages()) {
        stop.throwIfStopped();
        updates.pushBack(UpdatesAvailable(package.first, stop, policy, downloads));
    }
    return updates;
}

std::future<void> InstalledPackages::UpdatesAvailableAsync(std::function<void(const VoDeque<PackageUpdate>&)> callback,
                                                           VoStopFlag stop, const TrustPolicy& policy,
                                                           const VoDownloadPolicy& downloads)
{
    if (!callback)
        throw VoInvalidParameterException("Invalid callback");
    return std::async(std::launch::async, [callback = std::move(callback), stop, policy, downloads] {
        callback(UpdatesAvailable(stop, policy, downloads));
    });
}

} // namespace vo::updater
