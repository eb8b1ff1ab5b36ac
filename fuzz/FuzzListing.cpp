#include "Fuzz.h"

#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/install/UpdatePlan.h>

using namespace vo::fuzz;
using namespace vo::updater;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    const VoFilePath path = scratch.write("listing.xml", data, size);
    Allow([&] {
        const auto listing = InstalledPackageListing::Open(path);
        RequireStable(scratch, *listing);
        const AdvertisedPackageListing empty(listing->packageID(), listing->versionID(), listing->name(),
                                             listing->version());
        const auto plan = vo::updater::detail::PlanUpdate(listing.get(), empty);
        Require(plan.removedFiles <= listing->files().size() && plan.addedFiles == 0, "an empty release only removes");
    });
    return 0;
}
