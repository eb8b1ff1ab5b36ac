#include <Updater/UpdateCost.h>

#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstallationPlan.h>
#include <Updater/detail/install/UpdatePlan.h>

namespace vo::updater {

namespace {

UpdateCost CostOf(const InstallationPlan& plan)
{
    return {plan.addedFiles + plan.modifiedFiles, plan.chunks.size(), plan.bytesToFetch, plan.bytesToWrite};
}

} // namespace

UpdateCost UpdateCost::Of(const AdvertisedPackageListing& to)
{
    return CostOf(detail::PlanUpdate(nullptr, to));
}

UpdateCost UpdateCost::Of(const AdvertisedPackageListing& from, const AdvertisedPackageListing& to)
{
    return CostOf(detail::PlanUpdate(*from.compare(to), nullptr, to));
}

} // namespace vo::updater
