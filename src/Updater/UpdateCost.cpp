#include <Updater/UpdateCost.h>

#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstallationPlan.h>
#include <Updater/PackageDifferences.h>
#include <Updater/detail/install/PatchChoice.h>
#include <Updater/detail/install/UpdatePlan.h>

#include <utility>

namespace vo::updater {

namespace {

UpdateCost CostOf(const InstallationPlan& plan)
{
    return {plan.addedFiles + plan.modifiedFiles, plan.chunks.size(), plan.patches.size(), plan.bytesToFetch,
            plan.bytesToWrite};
}

} // namespace

UpdateCost UpdateCost::Of(const AdvertisedPackageListing& to)
{
    return CostOf(detail::PlanUpdate(nullptr, to));
}

UpdateCost UpdateCost::Of(const AdvertisedPackageListing& from, const AdvertisedPackageListing& to)
{
    const PackageDifferences differences = std::move(*from.compare(to));
    const auto before = [&](const VoUUID& id) { return from.file(id); };
    const auto patches = detail::CheapestPatches(detail::FittingPatches(differences, to, before), differences, to);
    InstallationPlan plan = detail::PlanTotals(differences, nullptr, to);
    detail::PlanFetching(plan, detail::Listings(detail::ChunkUses(detail::Without(differences, patches), to)),
                         detail::PatchFiles(patches, differences));
    return CostOf(plan);
}

} // namespace vo::updater
