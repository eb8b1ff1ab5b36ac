#include "../CommandError.h"
#include "../InstalledChoice.h"
#include "../Paths.h"
#include "../ReleaseChoice.h"
#include "../Session.h"
#include "../SourceRecord.h"
#include "../UpdateProgress.h"
#include "../VerificationView.h"

#include <Updater/InstalledPackages.h>

namespace vo::tool {

using namespace updater;

namespace {

/// The definition of the installed release: named on the command line, itself or by its declarations, or recorded when
/// the package was installed.
VoFilePath definitionOf(const Arguments& arguments, const InstalledPackageListing& installed)
{
    const auto from = arguments.file("from");
    if (!from) {
        const auto recorded = RecordedSource(installed.packageID());
        if (!recorded)
            throw UsageError("option --from is missing: where the package was installed from is not recorded");
        return *recorded;
    }
    const auto declared = AdvertisedPackages::Open(*from);
    if (!declared)
        return *from;
    return declared->package(installed.packageID(), installed.versionID()).definitionPath(*from);
}

ExitCode run(Session& session)
{
    Console& console = session.console;
    const auto installed = InstalledPackages::Package(ChooseInstalled(session.arguments.argument(0)));
    const VoFilePath definition = definitionOf(session.arguments, *installed);
    const VoReceiver receiver = InstalledPackages::Connect(
        [&](const VoSharedPtr<AbstractMessage>& message) { ShowUpdateMessage(console, message); });
    const VerificationReport found = InstalledPackages::Repair(definition, session.stop);
    console.endProgress();

    ShowFindings(console, found);
    console.fact("package", "package", found.packageID.toString(), found.packageID);
    console.fact("definition", "repaired from", PathText(definition));
    console.fact("files", "files checked", found.filesChecked);
    console.fact("restored", "files restored", found.missing.size() + found.changed.size());
    if (!found.isIntact())
        return ExitCode::Done;
    console.note("nothing to repair");
    return ExitCode::NothingToDo;
}

} // namespace

Command RepairCommand()
{
    return {
        "repair",
        "PACKAGE [--from DECLARATIONS|PACKAGE.XML]",
        "restore missing and changed files of a package",
        "Restores the missing and changed files of an installed package (an ID or a name), fetching only the chunks\n"
        "that these need. Lists what was wrong.\n",
        {{"from", "FILE", "the release's definition or declarations, instead of where it was installed from"}},
        1,
        1,
        run};
}

} // namespace vo::tool
