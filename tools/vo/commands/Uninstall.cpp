#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/InstalledChoice.h>
#include <vo/screen/UpdateProgress.h>

#include <Updater/InstalledPackages.h>
#include <Updater/PackageSources.h>
#include <Updater/VoUpdater.h>

namespace vo::tool {

using namespace updater;

namespace {

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const VoUUID packageID = ChooseInstalled(session.arguments.argument(0));
    const bool wasKnown = IsInstalled(packageID) || HasListing(packageID) || InstalledPackages::IsUnfinished(packageID);
    std::uint64_t removed = 0;
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        ShowUpdateMessage(console, message);
        if (const auto* progress = dynamic_cast<const UninstallProgressMessage*>(message.get()))
            removed = progress->processed();
    });
    // Also when it is not known: an installation that was interrupted may have left files.
    Doing(session.arguments, "uninstall", session.arguments.argument(0),
          [&] { InstalledPackages::Uninstall(packageID, session.stop); });
    console.endProgress();
    if (InstalledPackages::IsUnfinished(packageID))
        throw Failure("the files are removed, but " + PathText(VoUpdater::InstalledPackagesPath()) +
                      " cannot be written; the same command completes it");
    PackageSources::Forget(packageID);

    console.fact("package", "package", packageID.toString(), packageID);
    console.fact("files", "files removed", removed);
    if (wasKnown)
        return ExitCode::Done;
    console.note("the package is not installed");
    return ExitCode::NothingToDo;
}

} // namespace

Command UninstallCommand()
{
    return {"uninstall",
            "PACKAGE",
            "remove an installed package",
            "Removes the files of an installed package (an ID or a name) and the folders that installing it created.\n"
            "Other files stay, and so do the folders they lie in.\n",
            {},
            1,
            1,
            Run};
}

} // namespace vo::tool
