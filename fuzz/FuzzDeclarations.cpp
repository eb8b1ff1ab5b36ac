#include "Fuzz.h"

#include <Core/VoUUID.h>
#include <FileSystem/detail/SafePath.h>
#include <Updater/AdvertisedPackages.h>

using namespace vo::fuzz;
using vo::updater::AdvertisedPackages;

namespace {

void use(const AdvertisedPackages& declared, const Scratch& scratch)
{
    for (const AdvertisedPackages::Declaration& declaration : declared.declarations()) {
        declared.newestPackage(declaration.packageID());
        Allow([&] {
            const VoFilePath definition = declaration.definition(scratch.file("declarations.xml")).file();
            Require(scratch.directory().toFilePath().isAncestor(definition),
                    "a definition stays below its declarations");
        });
    }
    RequireStable(scratch, declared);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    const VoFilePath path = scratch.write("declarations.xml", data, size);
    Allow([&] {
        const auto declared = AdvertisedPackages::Open(path);
        if (declared)
            use(*declared, scratch);
    });
    return 0;
}
