#include "InstalledChoice.h"

#include "CommandError.h"

#include <Core/VoException.h>
#include <Updater/InstalledPackages.h>

#include <vector>

namespace vo::tool {

using updater::InstalledPackages;

namespace {

/// Empty for a listing that cannot be read: such a package is still reached by its ID.
VoString nameOf(const VoUUID& packageID)
{
    try {
        return InstalledPackages::Package(packageID)->name();
    } catch (const VoException&) {
        return VoString();
    }
}

} // namespace

bool IsInstalled(const VoUUID& packageID)
{
    for (const auto& package : InstalledPackages::Packages()) {
        if (package.first == packageID)
            return true;
    }
    return false;
}

VoUUID ChooseInstalled(const VoString& text)
{
    if (IsInstalled(VoUUID(text)))
        return VoUUID(text);
    std::vector<VoUUID> named;
    for (const auto& package : InstalledPackages::Packages()) {
        if (nameOf(package.first) == text)
            named.push_back(package.first);
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
