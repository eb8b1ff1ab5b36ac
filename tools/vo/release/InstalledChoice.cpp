#include <vo/release/InstalledChoice.h>

#include <vo/line/CommandError.h>

#include <Core/VoException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/InstalledPackages.h>
#include <Updater/VoUpdater.h>

#include <vector>

namespace vo::tool {

using updater::InstalledPackages;

bool IsInstalled(const VoUUID& packageID)
{
    for (const auto& package : InstalledPackages::Packages()) {
        if (package.first == packageID)
            return true;
    }
    return false;
}

bool HasListing(const VoUUID& packageID)
{
    return VoUpdater::IsIdentifier(packageID.toString()) &&
           VoFileSystem::Exists(InstalledPackages::InstalledPackageListingPath(packageID));
}

VoUUID RequireInstalled(const VoString& text)
{
    VoUUID packageID = ChooseInstalled(text);
    if (!IsInstalled(packageID) && !HasListing(packageID))
        throw Failure("\"" + text + "\" is not installed; see vo installed");
    return packageID;
}

VoUUID ChooseInstalled(const VoString& text)
{
    if (IsInstalled(VoUUID(text)))
        return VoUUID(text);
    std::vector<VoUUID> named;
    for (const auto& [id, name] : InstalledPackages::Names()) {
        if (name == text)
            named.push_back(id);
    }
    if (named.empty())
        return VoUUID(text);
    if (named.size() == 1)
        return named.front();
    VoString choices;
    for (const VoUUID& id : named)
        choices += " " + id.toString();
    throw UsageError("argument: \"" + text + "\" names several installed packages, give one of the IDs:" + choices);
}

} // namespace vo::tool
