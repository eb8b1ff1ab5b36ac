#include "InstallJob.h"

#include "CommandError.h"
#include "Downloads.h"
#include "PlanView.h"
#include "Session.h"

#include <Core/VoFileException.h>
#include <Updater/InstalledPackages.h>

namespace vo::tool {

using updater::InstallationPlan;
using updater::InstalledPackages;

namespace {

VoDirectoryPath installationDirectory(const Session& session, const VoUUID& packageID)
{
    if (const auto directory = session.arguments.directory("to"))
        return *directory;
    try {
        return InstalledPackages::Package(packageID)->installationDirectory();
    } catch (const VoFileNotFoundException&) {
        throw UsageError("option --to is missing: the package is not installed anywhere yet");
    }
}

} // namespace

std::vector<Option> InstallOptions()
{
    std::vector<Option> options = {
        {"to", "FOLDER", "where to install; not needed for a package that is installed"},
        {"package", "ID", "the package; needed when several are declared"},
        {"release", "V", "the release, such as 4.2.17, instead of the newest"},
        {"allow-downgrade", nullptr, "let an older release replace the installed one"},
    };
    const std::vector<Option> downloads = DownloadOptions();
    options.insert(options.end(), downloads.begin(), downloads.end());
    return options;
}

updater::InstallationOptions OptionsOfInstalling(const Session& session)
{
    updater::InstallationOptions options;
    options.reuseInstalledFiles = true;
    options.downloads = session.downloads;
    return options;
}

InstallJob PrepareInstall(const Session& session)
{
    InstallJob job;
    ChosenRelease release = OpenChosenRelease(session);
    job.definition = release.definition;
    job.directory = installationDirectory(session, release.package->packageID());
    job.package = std::move(release.package);
    job.plan = InstalledPackages::Plan(*job.package, job.directory, OptionsOfInstalling(session));
    return job;
}

void RequireNoDowngrade(const Session& session, const InstallationPlan& plan)
{
    if (plan.isDowngrade() && !session.arguments.has("allow-downgrade"))
        throw CommandError{ExitCode::Unsafe, "release " + ReleaseText(plan.version) + " is older than release " +
                                                 ReleaseText(plan.installedVersion) +
                                                 ", which is installed; --allow-downgrade installs it all the same"};
}

ExitCode ShowPlan(Session& session, const InstallJob& job)
{
    ShowPlanSteps(session.console, job.plan, job.directory);
    ShowPlanFigures(session.console, job.plan, job.directory);
    ShowDownloadCounts(session, job.definition);
    RequireNoDowngrade(session, job.plan);
    if (!job.plan.isUpToDate())
        return ExitCode::Done;
    session.console.note("already up to date");
    return ExitCode::NothingToDo;
}

} // namespace vo::tool
