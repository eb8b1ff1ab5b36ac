#include <vo/release/ManifestEdit.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/release/Keys.h>
#include <vo/release/ReleaseChoice.h>

#include <Updater/ReleaseSigner.h>

namespace vo::tool {

using namespace updater;

std::vector<Option> ManifestEditOptions()
{
    std::vector<Option> options = {
        {"package", "PACKAGE", "the package, by ID or name; needed when several are declared"},
        {"release", "V", "the release, such as 4.2.17, instead of the newest"},
    };
    const std::vector<Option> signing = SigningOptions();
    options.insert(options.end(), signing.begin(), signing.end());
    return options;
}

ExitCode EditRelease(Session& session, const std::function<void(ReleaseManifest::Release&)>& edit)
{
    const Arguments& arguments = session.arguments;
    const VoFilePath document = arguments.fileArgument(0);
    const auto declared = OpenDeclarations(session, document);
    const VoUUID packageID = ChoosePackage(*declared, arguments.text("package"));
    const auto& declaration = ChooseRelease(*declared, packageID, arguments.release("release"));
    const ReleaseSigner signer(document, SigningOf(session), [&] { session.stop.throwIfStopped(); });
    const ManifestState state = Doing(arguments, "change", NameOf(arguments, VoLocation(document)), [&] {
        return signer.change([&](ReleaseManifest& manifest) {
            ReleaseManifest::Release* release = manifest.release(packageID, declaration.versionID());
            if (!release)
                throw Failure("the release was published anew meanwhile; give the command again");
            edit(*release);
        });
    });
    session.console.fact("release", "release", ReleaseText(declaration.version()), declaration.version().toString());
    ShowManifest(session, state);
    return ExitCode::Done;
}

} // namespace vo::tool
