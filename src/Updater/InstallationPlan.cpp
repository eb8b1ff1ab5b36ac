#include <Updater/InstallationPlan.h>

namespace vo::updater {

bool InstallationPlan::isEmpty() const
{
    return files.isEmpty() && links.isEmpty() && removedLinks.isEmpty() && folders.isEmpty();
}

bool InstallationPlan::isUpToDate() const
{
    return isInstalled && isEmpty() && !isUnfinished && !isMove && installedVersionID == versionID;
}

bool InstallationPlan::isDowngrade() const
{
    return isInstalled && version < installedVersion;
}

} // namespace vo::updater
