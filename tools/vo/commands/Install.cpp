#include "../InstallJob.h"
#include "../PlanView.h"
#include "../Session.h"
#include "../SourceRecord.h"
#include "../Stopwatch.h"
#include "../UpdateProgress.h"

#include <Updater/InstalledPackages.h>

#include <atomic>

namespace vo::tool {

using namespace updater;

namespace {

/// Installs, and returns whether the check of the installed files at the end found them right.
bool install(Session& session, InstallJob& job)
{
    std::atomic<bool> intact{true};
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        ShowUpdateMessage(session.console, message);
        if (message->type() == AbstractMessage::VerificationFailed)
            intact = false;
    });
    std::visit(
        [&](const auto& definition) {
            InstalledPackages::Install(std::move(job.package), definition, job.directory, session.stop,
                                       OptionsOfInstalling(session));
        },
        job.definition);
    RecordSource(job.plan.packageID, job.definition);
    session.console.endProgress();
    return intact;
}

ExitCode run(Session& session)
{
    Console& console = session.console;
    InstallJob job = PrepareInstall(session);
    if (session.arguments.has("dry-run"))
        return ShowPlan(session, job);
    RequireNoDowngrade(session, job.plan);
    if (job.plan.isUpToDate()) {
        console.fact("package", "package", job.plan.packageID.toString(), job.plan.packageID);
        console.fact("release", "release", ReleaseText(job.plan.version), job.plan.version.toString());
        ShowDownloadCounts(session, job.definition);
        console.note("already up to date");
        return ExitCode::NothingToDo;
    }

    job.plan.files.clear(); // may be many thousands, and the installation plans anew
    const Stopwatch stopwatch;
    const bool intact = install(session, job);
    ShowInstalledFigures(console, job.plan, job.directory);
    ShowDownloadCounts(session, job.definition);
    console.fact("seconds", "seconds", SecondsText(stopwatch.seconds()), stopwatch.seconds());
    if (intact)
        return ExitCode::Done;
    console.error("the installed files are not all as published; see vo verify and vo repair");
    return ExitCode::Differences;
}

std::vector<Option> options()
{
    std::vector<Option> all = InstallOptions();
    all.push_back({"dry-run", nullptr, "only show what would be done, as vo plan"});
    return all;
}

} // namespace

Command InstallCommand()
{
    return {
        "install",
        "DECLARATIONS|PACKAGE.XML|URL --to FOLDER [--package ID] [--release V] [--dry-run] [--allow-downgrade]",
        "install a release, or update to it",
        "Installs a release of a local release directory or of a server (the http or https URL of one of the two\n"
        "documents): the newest one, or the one that --release names. Over an installed release only the chunks of "
        "added and changed files are fetched. Each file is built beside its\n"
        "place, checked and then renamed, so no file is ever seen half-written; a run that was interrupted goes on\n"
        "when the same command is given again. An older release than the installed one is refused.\n",
        options(),
        1,
        1,
        run};
}

} // namespace vo::tool
