#include <Updater/VerificationReport.h>

namespace vo::updater {

bool VerificationReport::isIntact() const
{
    return missing.isEmpty() && changed.isEmpty();
}

} // namespace vo::updater
