#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/InstallJob.h>
#include <vo/release/InstallWatch.h>
#include <vo/release/InstalledChoice.h>
#include <vo/release/StagedView.h>

#include <Updater/InstalledPackages.h>
#include <Updater/PackageSources.h>

#include <vector>

namespace vo::tool {

using namespace updater;

namespace {

/// The staged releases that the command line means: of the package with that ID, or else of those with that name.
std::vector<StagedInstallation> Chosen(const Arguments& arguments)
{
    std::vector<StagedInstallation> all;
    std::vector<StagedInstallation> named;
    for (const StagedInstallation& staged : InstalledPackages::Staged()) {
        if (arguments.count() == 0 || staged.packageID == VoUUID(arguments.argument(0)))
            all.push_back(staged);
        else if (staged.name == arguments.argument(0))
            named.push_back(staged);
    }
    if (!all.empty() || named.size() < 2)
        return all.empty() ? named : all;
    throw UsageError("argument: \"" + arguments.argument(0) + "\" names several staged packages, give an ID: " +
                     named[0].packageID.toString() + " " + named[1].packageID.toString());
}

/// False when the check of the installed files found them wrong.
bool Commit(Session& session, const StagedInstallation& staged)
{
    InstallWatch watch(session.console);
    const bool isNews = Doing(session.arguments, "commit", staged.name,
                              [&] { return InstalledPackages::Commit(staged.packageID, session.stop); });
    RecordSource(staged.packageID, {staged.definition});
    if (isNews)
        watch.requireRecorded();
    session.console.endProgress();
    ShowStaged(session.console, "packages", staged, "put in place");
    return watch.isIntact();
}

ExitCode Drop(Session& session, const std::vector<StagedInstallation>& chosen)
{
    bool wasThere = false;
    for (const StagedInstallation& staged : chosen) {
        Doing(session.arguments, "drop", staged.name, [&] {
            InstalledPackages::DropStaged(staged.packageID);
            if (!HasListing(staged.packageID))
                PackageSources::Forget(staged.packageID);
        });
        ShowStaged(session.console, "packages", staged, "dropped");
        wasThere = true;
    }
    // Also what cannot be read, or was never staged to its end.
    if (!wasThere && session.arguments.count() > 0)
        wasThere = Doing(session.arguments, "drop", session.arguments.argument(0),
                         [&] { return InstalledPackages::DropStaged(VoUUID(session.arguments.argument(0))); });
    if (wasThere)
        return ExitCode::Done;
    session.console.note("nothing is staged");
    return ExitCode::NothingToDo;
}

ExitCode Run(Session& session)
{
    session.console.list("packages");
    const std::vector<StagedInstallation> chosen = Chosen(session.arguments);
    if (session.arguments.has("drop"))
        return Drop(session, chosen);
    if (chosen.empty() && session.arguments.count() > 0)
        throw Failure("nothing is staged of \"" + session.arguments.argument(0) + "\"; see vo installed");
    bool isIntact = true;
    for (const StagedInstallation& staged : chosen)
        isIntact = Commit(session, staged) && isIntact;
    if (!isIntact) {
        session.console.error("the installed files are not all as published; see vo verify and vo repair");
        return ExitCode::Differences;
    }
    if (!chosen.empty())
        return ExitCode::Done;
    session.console.note("nothing is staged");
    return ExitCode::NothingToDo;
}

} // namespace

Command CommitCommand()
{
    return {
        "commit",
        "[PACKAGE] [--drop]",
        "put what vo install --stage-only has staged in place",
        "Puts the staged release of a package (an ID or a name), or of all packages, in place, as a whole or not at\n"
        "all. Nothing is fetched; the files are compared with their digests once more. A release that fits no more,\n"
        "because something else was installed since, or that its publisher vouches for no more, is refused: vo\n"
        "install --stage-only stages it again.\n",
        {{"drop", nullptr, "remove what is staged instead"}},
        0,
        1,
        Run};
}

} // namespace vo::tool
