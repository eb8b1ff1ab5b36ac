#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/StagedView.h>

#include <Core/VoException.h>
#include <Updater/InstalledPackages.h>

namespace vo::tool {

using namespace updater;

namespace {

ExitCode Run(Session& session)
{
    Console& console = session.console;
    ExitCode code = ExitCode::Done;
    console.list("packages");
    const auto packages = InstalledPackages::Packages();
    for (const auto& [packageID, version] : packages) {
        try {
            const auto listing = InstalledPackages::Package(packageID);
            const VoString directory = PathText(listing->installationDirectory());
            console.row(
                "packages",
                packageID.toString() + "  " + listing->name() + "  " + ReleaseText(version) + "  " +
                    VoString(listing->files().size()) + " files  " + directory,
                JsonRecord()("package", packageID)("name", listing->name())("release", version.toString())(
                    "versionID", listing->versionID())("files", listing->files().size())("directory", directory));
        } catch (const VoException&) {
            console.error(ToldFailure(session.arguments, "read the listing of", packageID.toString()));
            code = ExitCode::Failed;
        }
    }
    console.list("staged");
    const auto staged = InstalledPackages::Staged();
    for (const StagedInstallation& release : staged)
        ShowStaged(console, "staged", release);
    if (packages.isEmpty())
        console.note("nothing is installed");
    return code;
}

} // namespace

Command InstalledCommand()
{
    return {"installed",
            "",
            "list what is installed",
            "Lists the installed packages: ID, name, release, number of files and folder; then the releases that are\n"
            "staged and that vo commit puts in place.\n",
            {},
            0,
            0,
            Run};
}

} // namespace vo::tool
