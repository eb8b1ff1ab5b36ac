#include <Updater/VerificationReport.h>

namespace vo::updater {

bool VerificationReport::isIntact() const
{
    return missing.isEmpty() && changed.isEmpty() && notExecutable.isEmpty() && missingFolders.isEmpty();
}

} // namespace vo::updater
