#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/release/Keys.h>
#include <vo/release/ManifestEdit.h>
#include <vo/release/ReleaseChoice.h>

#include <Updater/ReleaseSigner.h>

namespace vo::tool {

using namespace updater;

namespace {

/// Raises the lowest release that may be installed.
ExitCode Raise(Session& session, const ReleaseNumber& lowest)
{
    const Arguments& arguments = session.arguments;
    const VoFilePath document = arguments.fileArgument(0);
    const VoUUID packageID = ChoosePackage(*OpenDeclarations(session, document), arguments.text("package"));
    const ReleaseSigner signer(document, SigningOf(session), [&] { session.stop.throwIfStopped(); });
    const ManifestState state = Doing(arguments, "change", NameOf(arguments, VoLocation(document)), [&] {
        return signer.change([&](ReleaseManifest& manifest) { manifest.raiseLowest(packageID, lowest.version); });
    });
    ShowManifest(session, state);
    return ExitCode::Done;
}

ExitCode Run(Session& session)
{
    const Arguments& arguments = session.arguments;
    const auto below = arguments.release("below");
    if (below && arguments.has("release"))
        throw UsageError("options --release and --below exclude each other");
    if (below)
        return Raise(session, *below);
    if (!arguments.has("release"))
        throw UsageError("option --release is missing");
    return EditRelease(
        session, [&](ReleaseManifest::Release& release) { release.isWithdrawn = !session.arguments.has("undo"); });
}

std::vector<Option> Options()
{
    std::vector<Option> all = ManifestEditOptions();
    all.push_back(
        {"below", "V", "withdraw all releases below V for good, also for installations that allow a downgrade"});
    all.push_back({"undo", nullptr, "offer the release again"});
    return all;
}

} // namespace

Command WithdrawCommand()
{
    return {"withdraw",
            "DECLARATIONS (--release V [--undo] | --below V) [--package ID] [--sign KEY]...",
            "offer a release no more",
            "Marks a release as withdrawn: nobody is offered it any more, and who asks for it is refused. Where it is\n"
            "installed it stays. --below makes V the lowest release that may be installed, for good.\n",
            Options(),
            1,
            1,
            Run};
}

} // namespace vo::tool
