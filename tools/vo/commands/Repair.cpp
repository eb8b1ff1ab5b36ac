#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/Downloads.h>
#include <vo/release/InstalledChoice.h>
#include <vo/release/ReleaseChoice.h>
#include <vo/screen/UpdateProgress.h>
#include <vo/screen/VerificationView.h>

#include <Updater/InstalledPackages.h>
#include <Updater/PackageSources.h>

#include <atomic>

namespace vo::tool {

using namespace updater;

namespace {

/// The definition of the installed release: named on the command line, itself or by its declarations, or recorded when
/// the package was installed.
VoLocation DefinitionOf(const Session& session, const InstalledPackageListing& installed)
{
    const auto from = session.arguments.location("from");
    if (!from) {
        const auto recorded = PackageSources::Recorded(installed.packageID());
        if (!recorded)
            throw UsageError("option --from is missing: where the package was installed from is not recorded");
        return recorded->definition;
    }
    const auto declared = ReadDeclarations(session, *from);
    if (!declared)
        return *from;
    return declared->package(installed.packageID(), installed.versionID()).definition(*from);
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const VoString& name = session.arguments.argument(0);
    const VoUUID packageID = RequireInstalled(name);
    const auto installed =
        Doing(session.arguments, "read the listing of", name, [&] { return InstalledPackages::Package(packageID); });
    const VoLocation definition = DefinitionOf(session, *installed);
    std::atomic<bool> intact{true};
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        ShowUpdateMessage(console, message);
        // The check before the repair ends with one of these as well; the last one counts.
        if (message->type() == AbstractMessage::VerificationFailed)
            intact = false;
        else if (message->type() == AbstractMessage::VerificationSuccess)
            intact = true;
    });
    const VerificationReport found = Doing(session.arguments, "repair", name, [&] {
        return InstalledPackages::Repair(definition, session.stop, session.downloads);
    });
    console.endProgress();

    ShowFindings(console, found);
    console.fact("package", "package", found.packageID.toString(), found.packageID);
    console.fact("definition", "repaired from", LocationText(definition));
    console.fact("files", "files checked", found.filesChecked);
    console.fact("restored", "files restored",
                 found.missing.size() + found.changed.size() + found.notExecutable.size() +
                     found.missingFolders.size());
    ShowDownloadCounts(session, definition);
    if (!intact) {
        console.error("the installed files are not all as published; see vo verify");
        return ExitCode::Differences;
    }
    if (!found.isIntact())
        return ExitCode::Done;
    console.note("nothing to repair");
    return ExitCode::NothingToDo;
}

std::vector<Option> Options()
{
    std::vector<Option> all = DownloadOptions();
    all.insert(all.begin(), {"from", "FILE|URL",
                             "the release's definition or declarations, instead of where it was installed from"});
    return all;
}

} // namespace

Command RepairCommand()
{
    return {
        "repair",
        "PACKAGE [--from DECLARATIONS|PACKAGE.XML|URL]",
        "restore missing and changed files of a package",
        "Restores the missing and changed files of an installed package (an ID or a name), fetching only the chunks\n"
        "that these need. Lists what was wrong.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
