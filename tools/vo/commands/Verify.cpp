#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/release/InstalledChoice.h>
#include <vo/screen/UpdateProgress.h>
#include <vo/screen/VerificationView.h>

#include <Updater/InstalledPackages.h>

#include <vector>

namespace vo::tool {

using namespace updater;

namespace {

std::vector<VoUUID> PackagesToVerify(const Arguments& arguments)
{
    if (arguments.count() > 0)
        return {RequireInstalled(arguments.argument(0))};
    std::vector<VoUUID> all;
    for (const auto& package : InstalledPackages::Packages())
        all.push_back(package.first);
    return all;
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const VoReceiver receiver = InstalledPackages::Connect(
        [&](const VoSharedPtr<AbstractMessage>& message) { ShowUpdateMessage(console, message); });

    std::uint64_t checked = 0;
    std::size_t missing = 0;
    std::size_t changed = 0;
    std::size_t extra = 0;
    const std::vector<VoUUID> packages = PackagesToVerify(session.arguments);
    console.list("findings");
    for (const VoUUID& packageID : packages) {
        const VerificationReport report = Doing(session.arguments, "verify", packageID.toString(),
                                                [&] { return InstalledPackages::Verify(packageID, session.stop); });
        console.endProgress();
        ShowFindings(console, report);
        checked += report.filesChecked;
        missing += report.missing.size() + report.missingFolders.size();
        changed += report.changed.size() + report.notExecutable.size();
        extra += report.extra.size();
    }
    console.fact("packages", "packages", packages.size());
    console.fact("files", "files checked", checked);
    console.fact("missing", "missing", missing);
    console.fact("changed", "changed", changed);
    console.fact("extra", "extra", extra);
    return missing + changed > 0 ? ExitCode::Differences : ExitCode::Done;
}

} // namespace

Command VerifyCommand()
{
    return {"verify",
            "[PACKAGE]",
            "check installed files against their listings",
            "Reads every installed file of a package (an ID or a name), or of all packages, and lists those that are\n"
            "missing or changed, links and empty folders among them, and as \"not-run\" programs that may not be run.\n"
            "Files that no package brought, in folders that installing created, are listed as extra; they count as no\n"
            "difference.\n",
            {},
            0,
            1,
            Run};
}

} // namespace vo::tool
