#include "Fuzz.h"

#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/detail/SafePath.h>
#include <Updater/InstalledPackages.h>
#include <Updater/VoUpdater.h>

using namespace vo::fuzz;
using vo::updater::InstalledPackages;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scratch scratch;
    // A registry is read once for each place it stands at.
    static int place = 0;
    const VoDirectoryPath directory = scratch.directory().directory(VoString(++place % 2));
    VoFileSystem::CreateDirectory(directory.directory("installed"), true);
    scratch.write(place % 2 == 0 ? "0\\installed\\packages.xml" : "1\\installed\\packages.xml", data, size);
    VoUpdater::OverrideUpdateSystemDirectory(directory);
    Allow([&] {
        for (const auto& package : InstalledPackages::Packages())
            Require(vo::detail::SafeName(package.first.toString()), "entries have IDs that can be a file's name");
    });
    return 0;
}
