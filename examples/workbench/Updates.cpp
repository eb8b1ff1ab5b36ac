#include "Updates.h"

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/InstalledPackages.h>
#include <Updater/UpdateMessages.h>

#include <algorithm>

using namespace vo::updater;

namespace {

const AdvertisedPackages::Declaration& NewestOf(const AdvertisedPackages& packages, const VoString& name)
{
    for (const auto& declaration : packages.declarations()) {
        if (declaration.name() == name)
            return packages.newestPackage(declaration.packageID());
    }
    throw VoNotFoundException(name);
}

bool IsInstalled(const VoUUID& packageID, const VoVersion& version)
{
    const auto packages = InstalledPackages::Packages();
    return std::any_of(packages.begin(), packages.end(),
                       [&](const auto& package) { return package.first == packageID && package.second == version; });
}

template <typename Message>
bool Show(const AbstractMessage& message, const char* what, const Job::Progress& progress)
{
    const auto* const known = dynamic_cast<const Message*>(&message);
    if (known && !known->total().isUnknown() && known->total().bytes() > 0)
        progress(double(known->processed().bytes()) / double(known->total().bytes()), what);
    return known != nullptr;
}

} // namespace

std::optional<Update> FindUpdate(const VoFilePath& declarations, const VoString& packageName)
{
    const VoUniquePtr<AdvertisedPackages> packages = AdvertisedPackages::Open(declarations);
    const AdvertisedPackages::Declaration& newest = NewestOf(*packages, packageName);
    if (IsInstalled(newest.packageID(), newest.version()))
        return std::nullopt;
    return Update{newest.name(), newest.version(), newest.definition(declarations)};
}

Job::Work InstallUpdate(const Update& update, const VoDirectoryPath& directory)
{
    return [update, directory](const VoStopFlag& stop, const Job::Progress& progress) {
        const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
            Show<DownloadProgressMessage>(*message, "Fetching", progress) ||
                Show<InstallationProgressMessage>(*message, "Installing", progress);
        });
        InstallationOptions options;
        options.refuseForeignFiles = true;
        options.refuseOlder = true;
        InstalledPackages::Install(update.definition, directory, stop, options);
        return update.name + " " + update.version.toString() + " is installed";
    };
}
