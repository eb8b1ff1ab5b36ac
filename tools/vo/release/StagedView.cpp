#include <vo/release/StagedView.h>

#include <vo/line/Paths.h>
#include <vo/line/Values.h>
#include <vo/screen/Console.h>

namespace vo::tool {

void ShowStaged(Console& console, const char* list, const updater::StagedInstallation& staged, const char* state)
{
    const VoString directory = PathText(staged.directory);
    console.row(
        list,
        staged.packageID.toString() + "  " + staged.name + "  " + ReleaseText(staged.version) + "  " + state + ", " +
            VoString(staged.files) + " files  " + directory,
        JsonRecord()("package", staged.packageID)("name", staged.name)("release", staged.version.toString())(
            "versionID", staged.versionID)("files", staged.files)("bytes", staged.bytes)("directory", directory));
}

} // namespace vo::tool
