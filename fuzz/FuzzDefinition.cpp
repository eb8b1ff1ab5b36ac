#include "Fuzz.h"

#include <FileSystem/detail/SafePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/install/UpdatePlan.h>

using namespace vo::fuzz;
using vo::updater::AdvertisedFileListing;
using vo::updater::AdvertisedPackageListing;

namespace {

void requireSafe(const AdvertisedPackageListing& package, const VoDirectoryPath& installation)
{
    for (const AdvertisedFileListing& file : package.files()) {
        Require(vo::detail::SafeRelativePath(file.target()), "a package that passes has safe targets");
        Require(installation.toFilePath().isAncestor(installation.appended(file.target())),
                "a safe target stays in the installation directory");
    }
    const auto plan = vo::updater::detail::PlanUpdate(nullptr, package);
    Require(plan.addedFiles == package.files().size(), "everything is added where nothing is installed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    const VoFilePath path = scratch.write("package.xml", data, size);
    Allow([&] {
        const auto package = AdvertisedPackageListing::Open(path);
        Require(package->compare(*package)->fileDifferences().isEmpty(), "a release does not differ from itself");
        RequireStable(scratch, *package);
        vo::updater::detail::ValidatePackage(*package);
        requireSafe(*package, scratch.directory());
    });
    return 0;
}
