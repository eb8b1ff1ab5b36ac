#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/InstallJob.h>
#include <vo/screen/PlanView.h>
#include <vo/screen/UpdateProgress.h>

#include <Time/VoTimer.h>
#include <Updater/InstalledPackages.h>

namespace vo::tool {

using namespace updater;

namespace {

ExitCode Stage(Session& session, InstallJob& job)
{
    const VoReceiver receiver = InstalledPackages::Connect(
        [&](const VoSharedPtr<AbstractMessage>& message) { ShowUpdateMessage(session.console, message); });
    job.plan.files.clear(); // may be many thousands, and the staging plans anew
    const StagedInstallation staged =
        Doing(session.arguments, "stage for", NameOf(session.arguments, job.directory), [&] {
            auto result = InstalledPackages::Stage(std::move(job.package), job.definition, job.directory, session.stop,
                                                   OptionsOfInstalling(session, job));
            RecordStagedSource(job);
            return result;
        });
    session.console.endProgress();
    ShowPlanFigures(session.console, job.plan, job.directory);
    ShowDownloadCounts(session, job.definition);
    session.console.fact("filesStaged", "files staged", staged.files);
    session.console.note("staged; vo commit puts it in place");
    return ExitCode::Done;
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    InstallJob job = PrepareInstall(session);
    if (session.arguments.has("dry-run"))
        return ShowPlan(session, job);
    ShowClaims(console, job.plan, job.directory);
    RequireAllowed(session, job);
    job.examinesAll = session.arguments.has("check");
    if (job.plan.isUpToDate() && !job.examinesAll) {
        RecordSource(job);
        console.fact("package", "package", job.plan.packageID.toString(), job.plan.packageID);
        console.fact("release", "release", ReleaseText(job.plan.version), job.plan.version.toString());
        ShowDownloadCounts(session, job.definition);
        console.note("already up to date");
        return ExitCode::NothingToDo;
    }

    if (session.arguments.has("stage-only"))
        return Stage(session, job);
    const VoTimer timer;
    const bool intact = CarryOut(session, job);
    ShowInstalledFigures(console, job.plan, job.directory);
    ShowDownloadCounts(session, job.definition);
    const double seconds = timer.elapsed().seconds();
    console.fact("seconds", "time", TimeText(seconds), seconds);
    if (intact)
        return ExitCode::Done;
    console.error("the installed files are not all as published; see vo verify and vo repair");
    return ExitCode::Differences;
}

std::vector<Option> Options()
{
    std::vector<Option> all = InstallOptions();
    all.push_back({"check", nullptr, "read every installed file at the end, also those unchanged by size and time"});
    all.push_back({"dry-run", nullptr, "only show what would be done, as vo plan"});
    all.push_back({"stage-only", nullptr, "fetch, build and check; vo commit puts it in place"});
    all.push_back(AllOption());
    return all;
}

} // namespace

Command InstallCommand()
{
    return {
        "install",
        "DECLARATIONS|PACKAGE.XML|URL --to FOLDER [OPTIONS]",
        "install a release, or update to it",
        "Installs a release of a local release directory or of a server (the http or https URL of one of the two\n"
        "documents): the newest one, or the one that --release names. Over an installed release only the chunks\n"
        "of added and changed files are fetched. Each file is built beside its place, checked and then renamed, so no\n"
        "file is ever seen half-written; a run that was interrupted goes on when the same command is given again. An\n"
        "older release than the installed one is refused, and so is one from another place or for another folder, and\n"
        "one in whose places there are files that belong to no package; files of another package are never replaced.\n"
        "--stage-only needs no rights at the folder and changes nothing there; vo commit does the rest in a moment.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
