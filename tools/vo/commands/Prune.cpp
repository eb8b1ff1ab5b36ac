#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/release/Keys.h>

#include <Updater/ReleaseSigner.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    const Arguments& arguments = session.arguments;
    const VoFilePath document = arguments.fileArgument(0);
    if (!arguments.has("keep"))
        throw UsageError("option --keep is missing");
    const auto keep = static_cast<std::size_t>(arguments.integer("keep", 1, 1, 1000000));
    const updater::ReleaseSigner signer(document, SigningOf(session), [&] { session.stop.throwIfStopped(); });
    const bool onlyLook = arguments.has("dry-run");
    const auto cleared = Doing(arguments, "prune", NameOf(arguments, VoLocation(document)),
                               [&] { return signer.clear(keep, onlyLook); });
    Console& console = session.console;
    console.list("releases");
    for (const VoString& release : cleared.releases)
        console.row("releases", "release " + release, JsonRecord()("release", release));
    console.fact("files", "files", cleared.files);
    console.fact("folders", "killed runs", cleared.folders);
    console.fact("bytes", "bytes", BytesText(cleared.bytes), cleared.bytes);
    ShowManifest(session, cleared.manifest);
    const bool isNothing = cleared.releases.isEmpty() && cleared.files == 0 && cleared.folders == 0;
    if (isNothing)
        console.note("nothing to prune");
    return isNothing ? ExitCode::NothingToDo : ExitCode::Done;
}

std::vector<Option> Options()
{
    std::vector<Option> all = SigningOptions();
    all.insert(all.begin(), {{"keep", "N", "how many releases of each package to keep, the newest"},
                             {"dry-run", nullptr, "only show what would be removed"}});
    return all;
}

} // namespace

Command PruneCommand()
{
    return {
        "prune",
        "DECLARATIONS --keep N [--dry-run] [--sign KEY]...",
        "remove old releases and what nothing refers to",
        "Keeps the newest releases of each package, and removes the files of the others, chunks that no declared\n"
        "release refers to, and what killed runs of \"vo publish\" left, also in the directory for temporary files.\n"
        "What the manifest in effect lists stays until the next one is signed. Files that are not the tool's stay.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
