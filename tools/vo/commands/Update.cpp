#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/InstallJob.h>
#include <vo/release/InstalledChoice.h>
#include <vo/release/ReleaseChoice.h>
#include <vo/screen/PlanView.h>

#include <Updater/InstalledPackages.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace vo::tool {

using namespace updater;

namespace {

std::vector<VoUUID> PackagesToUpdate(const Arguments& arguments)
{
    std::vector<VoUUID> packages;
    for (std::size_t i = 0; i < arguments.count(); ++i)
        packages.push_back(RequireInstalled(arguments.argument(i)));
    if (arguments.count() == 0) {
        for (const auto& package : InstalledPackages::Packages())
            packages.push_back(package.first);
    }
    return packages;
}

/// What has become of the packages, for the code that the command ends with.
struct Outcomes
{
    std::size_t updates = 0; ///< Installed, or with --check to be had.
    std::size_t failures = 0;
    ExitCode worst = ExitCode::Done; ///< Of the first failure.

    void fail(ExitCode code)
    {
        if (failures++ == 0)
            worst = code;
    }
};

VoString TitleOf(const PackageUpdate& update)
{
    return update.name.isEmpty() ? update.packageID.toString() : update.name;
}

void Show(Console& console, const PackageUpdate& update, const char* state)
{
    VoString shown(state);
    shown.resize(11, ' ');
    VoString line = shown + TitleOf(update) + "  " + ReleaseText(update.installed);
    if (update.available)
        line += " -> " + ReleaseText(*update.available);
    console.row(
        "updates", line,
        JsonRecord()("package", update.packageID)("name", update.name)("state", state)("installed",
                                                                                       update.installed.toString())(
            "available", update.available ? update.available->toString() : VoString())("failure", update.failure));
}

void ShowFailure(Session& session, PackageUpdate update, const CommandError& failure, Outcomes& outcomes)
{
    session.console.endProgress();
    update.failure = failure.text;
    Show(session.console, update, "failed");
    CommandError told = failure;
    told.text = "cannot update " + TitleOf(update) + ": " + failure.text;
    session.console.error(told);
    outcomes.fail(failure.code);
}

/// Reads the release anew, so that what is installed is what is verified here.
InstallJob PrepareUpdate(const Session& session, const PackageUpdate& update)
{
    const VoLocation declarations = update.source->declared();
    const TrustedReleases releases = OpenTrusted(session, declarations);
    auto release = Doing(session.arguments, "", "", [&] { return releases.open(releases.newest(update.packageID)); });
    InstallJob job;
    job.definition = release.definition;
    job.declarations = declarations;
    job.directory = InstalledPackages::Package(update.packageID)->installationDirectory();
    job.package = std::move(release.package);
    job.proof = std::move(release.proof);
    job.plan = Doing(session.arguments, "", "", [&] {
        return InstalledPackages::Plan(*job.package, job.directory, OptionsOfInstalling(session, job));
    });
    return job;
}

void Install(Session& session, const PackageUpdate& update, Outcomes& outcomes)
{
    InstallJob job = PrepareUpdate(session, update);
    ShowClaims(session.console, job.plan, job.directory);
    RequireAllowed(session, job);
    if (!CarryOut(session, job))
        throw CommandError{ExitCode::Differences, "the installed files are not all as published; see vo repair"};
    ++outcomes.updates;
    Show(session.console, update, "updated");
}

void Update(Session& session, const PackageUpdate& update, Outcomes& outcomes)
{
    if (!update.failure.isEmpty())
        return ShowFailure(session, update, Failure(TextOfLibrary(update.failure)), outcomes);
    // Installing the release once more ends what a killed run has not: names and space that it still holds, its record.
    if (!update.available && (session.arguments.has("check") || !InstalledPackages::IsUnfinished(update.packageID)))
        return Show(session.console, update, "current");
    if (session.arguments.has("check")) {
        ++outcomes.updates;
        return Show(session.console, update, "available");
    }
    try {
        Install(session, update, outcomes);
    } catch (const CommandError& failure) {
        if (failure.code == ExitCode::Cancelled)
            throw;
        ShowFailure(session, update, failure, outcomes);
    }
}

ExitCode Run(Session& session)
{
    const std::vector<VoUUID> packages = PackagesToUpdate(session.arguments);
    const TrustPolicy policy = TrustOf(session);
    Outcomes outcomes;
    session.console.list("updates");
    for (const VoUUID& packageID : packages)
        Update(session, InstalledPackages::UpdatesAvailable(packageID, session.stop, policy, session.downloads),
               outcomes);
    if (packages.empty())
        session.console.note("nothing is installed");
    if (outcomes.failures > 0)
        return outcomes.worst;
    return outcomes.updates > 0 ? ExitCode::Done : ExitCode::NothingToDo;
}

/// Those of installing that need no named document.
std::vector<Option> Options()
{
    std::vector<Option> all = InstallOptions();
    constexpr std::string_view others[] = {"to", "package", "release", "allow-downgrade", "move", "mirror"};
    const auto isOther = [&](const Option& option) {
        return std::find(std::begin(others), std::end(others), option.name) != std::end(others);
    };
    all.erase(std::remove_if(all.begin(), all.end(), isOther), all.end());
    all.insert(all.begin(), {"check", nullptr, "only list the updates that there are"});
    return all;
}

} // namespace

Command UpdateCommand()
{
    return {"update",
            "[PACKAGE...] [--check]",
            "update what is installed, from where it came",
            "Asks for each installed package, or for those named (an ID or a name), the place that it was installed\n"
            "from for the newest release, and installs it where there is one. Each package is listed with what became\n"
            "of it; one that fails does not keep the others from being updated. The exit code is 3 when there is\n"
            "nothing to update, and with --check 0 when there is something.\n",
            Options(),
            0,
            AnyNumber,
            Run};
}

} // namespace vo::tool
