#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/Downloads.h>
#include <vo/release/ReleaseChoice.h>

#include <map>
#include <string>

namespace vo::tool {

using Declaration = updater::AdvertisedPackages::Declaration;

namespace {

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const VoLocation location = session.arguments.locationArgument(0);
    const updater::TrustedReleases releases = OpenTrusted(session, location);
    const updater::AdvertisedPackages* declared = releases.declarations();
    if (!declared)
        throw Failure(NameOf(session.arguments, location) + " is not a declarations file");
    std::map<std::string, const Declaration*> newestOf;
    console.list("releases");
    for (const Declaration& declaration : declared->declarations()) {
        const auto [found, isFirst] = newestOf.try_emplace(declaration.packageID().toString().toStdString());
        if (isFirst)
            found->second = &declared->newestPackage(declaration.packageID());
        const bool newest = found->second == &declaration;
        const VoString path = PathText(declaration.path());
        const VoString why = releases.whyNotOffered(declaration);
        console.row("releases",
                    declaration.packageID().toString() + "  " + declaration.name() + "  " +
                        ReleaseText(declaration.version()) + (newest ? "  newest" : "") +
                        (why.isEmpty() ? VoString() : "  not offered: " + why),
                    JsonRecord()("package", declaration.packageID())("versionID", declaration.versionID())(
                        "name", declaration.name())("release", declaration.version().toString())("newest", newest)(
                        "definition", path)("notOffered", why));
    }
    ShowDownloadCounts(session, location);
    if (declared->declarations().isEmpty())
        console.note("no release is declared");
    return ExitCode::Done;
}

std::vector<Option> Options()
{
    std::vector<Option> all = TrustOptions();
    const std::vector<Option> downloads = DownloadOptions();
    all.insert(all.end(), downloads.begin(), downloads.end());
    return all;
}

} // namespace

Command ReleasesCommand()
{
    return {"releases",
            "DECLARATIONS|URL",
            "list the published releases",
            "Lists the releases that a declarations file, or the one behind a URL, declares, in the order of\n"
            "publication: package ID, name and release, and why one is not offered to this installation.\n",
            Options(),
            1,
            1,
            Run};
}

} // namespace vo::tool
