#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/InstallJob.h>
#include <vo/release/SourceRecord.h>
#include <vo/screen/PlanView.h>
#include <vo/screen/UpdateProgress.h>

#include <Time/VoTimer.h>
#include <Updater/InstalledPackages.h>
#include <Updater/VoUpdater.h>

#include <atomic>

namespace vo::tool {

using namespace updater;

namespace {

/// Remembers where the release came from, also of one that was installed before from elsewhere, or by a run that was
/// killed before it could.
void Record(const InstallJob& job)
{
    const auto recorded = RecordedSource(job.plan.packageID);
    if (!recorded || LocationText(*recorded) != LocationText(job.definition))
        RecordSource(job.plan.packageID, job.definition);
}

/// Installs, and returns whether the check of the installed files at the end found them right.
bool Install(Session& session, InstallJob& job)
{
    std::atomic<bool> intact{true};
    std::atomic<bool> recorded{false};
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        ShowUpdateMessage(session.console, message);
        if (message->type() == AbstractMessage::VerificationFailed)
            intact = false;
        // Before it starts, what was interrupted may be recorded.
        if (message->type() == AbstractMessage::InstallationStarted)
            recorded = false;
        if (message->type() == AbstractMessage::PackagesUpdated)
            recorded = true;
    });
    InstalledPackages::Install(std::move(job.package), job.definition, job.directory, session.stop,
                               OptionsOfInstalling(session, job));
    Record(job);
    session.console.endProgress();
    if (!recorded)
        throw Failure("the files are installed, but " + PathText(VoUpdater::InstalledPackagesPath()) +
                      " cannot be written; the same command completes it");
    return intact;
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    InstallJob job = PrepareInstall(session);
    if (session.arguments.has("dry-run"))
        return ShowPlan(session, job);
    ShowClaims(console, job.plan, job.directory);
    RequireAllowed(session, job);
    if (job.plan.isUpToDate()) {
        Record(job);
        console.fact("package", "package", job.plan.packageID.toString(), job.plan.packageID);
        console.fact("release", "release", ReleaseText(job.plan.version), job.plan.version.toString());
        ShowDownloadCounts(session, job.definition);
        console.note("already up to date");
        return ExitCode::NothingToDo;
    }

    job.plan.files.clear(); // may be many thousands, and the installation plans anew
    const VoTimer timer;
    const bool intact = Doing(session.arguments, "install to", NameOf(session.arguments, job.directory),
                              [&] { return Install(session, job); });
    ShowInstalledFigures(console, job.plan, job.directory);
    ShowDownloadCounts(session, job.definition);
    const double seconds = timer.elapsed().seconds();
    console.fact("seconds", "seconds", SecondsText(seconds), seconds);
    if (intact)
        return ExitCode::Done;
    console.error("the installed files are not all as published; see vo verify and vo repair");
    return ExitCode::Differences;
}

std::vector<Option> Options()
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
        "DECLARATIONS|PACKAGE.XML|URL --to FOLDER [--package ID] [--release V] [--dry-run] [--allow-downgrade] "
        "[--move] [--overwrite]",
        "install a release, or update to it",
        "Installs a release of a local release directory or of a server (the http or https URL of one of the two\n"
        "documents): the newest one, or the one that --release names. Over an installed release only the chunks\n"
        "of added and changed files are fetched. Each file is built beside its place, checked and then renamed, so no\n"
        "file is ever seen half-written; a run that was interrupted goes on when the same command is given again. An\n"
        "older release than the installed one is refused, and so is one from another place or for another folder, and\n"
        "one in whose places there are files that belong to no package; files of another package are never replaced.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
