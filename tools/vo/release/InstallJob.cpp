#include <vo/release/InstallJob.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/Downloads.h>
#include <vo/release/InstallWatch.h>
#include <vo/release/InstalledChoice.h>
#include <vo/screen/PlanView.h>
#include <vo/screen/Terminal.h>

#include <Updater/InstalledPackages.h>
#include <Updater/PackageSources.h>

namespace vo::tool {

using updater::InstallationPlan;
using updater::InstalledPackages;
using updater::PackageSources;

namespace {

VoDirectoryPath InstallationDirectory(const Session& session, const VoUUID& packageID)
{
    if (const auto directory = session.arguments.directory("to"))
        return *directory;
    if (!HasListing(packageID))
        throw UsageError("option --to is missing: the package is not installed anywhere yet");
    return InstalledPackages::Package(packageID)->installationDirectory();
}

} // namespace

std::vector<Option> InstallOptions()
{
    std::vector<Option> options = {
        {"to", "FOLDER", "where to install; not needed for a package that is installed"},
        {"package", "PACKAGE", "the package, by ID or name; needed when several are declared"},
        {"release", "V", "the release, such as 4.2.17, instead of the newest"},
        {"allow-downgrade", nullptr, "let an older release replace the installed one"},
        {"move", nullptr, "let a package be replaced that is in another folder or came from another place"},
        {"overwrite", nullptr, "let files be replaced that belong to no package"},
    };
    const std::vector<Option> trust = TrustOptions();
    options.insert(options.end(), trust.begin(), trust.end());
    const std::vector<Option> downloads = DownloadOptions();
    options.insert(options.end(), downloads.begin(), downloads.end());
    return options;
}

Option AllOption()
{
    return {"all", nullptr, "list every file and chunk, also more than fits on the terminal"};
}

updater::InstallationOptions OptionsOfInstalling(const Session& session, const InstallJob& job)
{
    updater::InstallationOptions options;
    options.reuseInstalledFiles = true;
    options.refuseForeignFiles = !session.arguments.has("overwrite");
    options.refuseOtherDirectory = !session.arguments.has("move");
    options.refuseOlder = !session.arguments.has("allow-downgrade");
    options.downloads = session.downloads;
    options.proof = job.proof;
    options.examineAll = job.examinesAll;
    return options;
}

InstallJob PrepareInstall(const Session& session)
{
    InstallJob job;
    ChosenRelease release = OpenOfferedRelease(session);
    job.definition = release.definition;
    job.declarations = release.declarations;
    job.directory = InstallationDirectory(session, release.package->packageID());
    job.package = std::move(release.package);
    job.proof = std::move(release.proof);
    job.refused = std::move(release.refused);
    job.plan = Doing(session.arguments, "install to", NameOf(session.arguments, job.directory), [&] {
        return InstalledPackages::Plan(*job.package, job.directory, OptionsOfInstalling(session, job));
    });
    return job;
}

namespace {

void RequireAllowedPlace(const Session& session, const InstallJob& job)
{
    if (session.arguments.has("move") || !job.plan.isInstalled)
        return;
    if (job.plan.isMove)
        throw CommandError{ExitCode::Unsafe, "the package is installed in " + PathText(job.plan.installedDirectory) +
                                                 "; --move installs it here instead"};
    const auto recorded = PackageSources::Recorded(job.plan.packageID);
    if (recorded && !PackageSources::IsSamePlace(recorded->definition, job.definition))
        throw CommandError{ExitCode::Unsafe, "the package was installed from " + LocationText(recorded->definition) +
                                                 "; --move lets a release from another place replace it"};
}

void RequireAllowedFiles(const Session& session, const InstallationPlan& plan)
{
    if (!plan.conflicts.isEmpty())
        throw CommandError{ExitCode::Unsafe, "files of other packages are in the places of its files: " +
                                                 VoString(plan.conflicts.size())};
    if (!plan.foreignFiles.isEmpty() && !session.arguments.has("overwrite"))
        throw CommandError{ExitCode::Unsafe, "files that belong to no package are in the places of its files: " +
                                                 VoString(plan.foreignFiles.size()) + "; --overwrite replaces them"};
}

} // namespace

void RequireAllowed(const Session& session, const InstallJob& job)
{
    const InstallationPlan& plan = job.plan;
    RequireAllowedPlace(session, job);
    if (plan.isDowngrade() && !session.arguments.has("allow-downgrade"))
        throw CommandError{ExitCode::Unsafe, "release " + ReleaseText(plan.version) + " is older than release " +
                                                 ReleaseText(plan.installedVersion) +
                                                 ", which is installed; --allow-downgrade installs it all the same"};
    RequireAllowedFiles(session, plan);
}

void RecordSource(const VoUUID& packageID, updater::PackageSource source)
{
    const auto recorded = PackageSources::Recorded(packageID);
    // A definition that was named by itself does not make the document unknown that declares it.
    if (recorded && source.declarations.isNull() &&
        PackageSources::IsSamePlace(recorded->definition, source.definition))
        source.declarations = recorded->declarations;
    const auto isSame = [](const VoLocation& a, const VoLocation& b) { return LocationText(a) == LocationText(b); };
    if (!recorded || !isSame(recorded->definition, source.definition) ||
        !isSame(recorded->declarations, source.declarations))
        PackageSources::Record(packageID, source);
}

void RecordSource(const InstallJob& job)
{
    RecordSource(job.plan.packageID, {job.definition, job.declarations});
}

void RecordStagedSource(const InstallJob& job)
{
    const auto recorded = PackageSources::Recorded(job.plan.packageID);
    if (!job.plan.isInstalled || (recorded && PackageSources::IsSamePlace(recorded->definition, job.definition)))
        RecordSource(job);
}

bool CarryOut(Session& session, InstallJob& job)
{
    InstallWatch watch(session.console);
    job.plan.files.clear(); // may be many thousands, and the installation plans anew
    Doing(session.arguments, "install to", NameOf(session.arguments, job.directory), [&] {
        InstalledPackages::Install(std::move(job.package), job.definition, job.directory, session.stop,
                                   OptionsOfInstalling(session, job));
        RecordSource(job);
    });
    watch.requireRecorded();
    return watch.isIntact();
}

ExitCode ShowPlan(Session& session, const InstallJob& job)
{
    const std::optional<std::size_t> rows = session.arguments.has("all") ? std::nullopt : OutputSize().rows;
    ShowPlanSteps(session.console, job.plan, job.directory, rows);
    ShowPlanFigures(session.console, job.plan, job.directory);
    session.console.member("verified", job.proof != nullptr);
    session.console.list("notOffered");
    for (const auto& [version, why] : job.refused)
        session.console.row("notOffered", "not offered     release " + ReleaseText(version) + ": " + why,
                            JsonRecord()("release", version.toString())("reason", why));
    ShowDownloadCounts(session, job.definition);
    RequireAllowed(session, job);
    if (!job.plan.isUpToDate())
        return ExitCode::Done;
    session.console.note("already up to date");
    return ExitCode::NothingToDo;
}

} // namespace vo::tool
