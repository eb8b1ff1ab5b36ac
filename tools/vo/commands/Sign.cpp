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
    if (!arguments.has("sign"))
        throw UsageError("option --sign is missing");
    const updater::ReleaseSigner signer(document, SigningOf(session), [&] { session.stop.throwIfStopped(); });
    const auto state = Doing(arguments, "sign", NameOf(arguments, VoLocation(document)),
                             [&] { return signer.sign(arguments.has("refresh")); });
    ShowManifest(session, state);
    return ExitCode::Done;
}

std::vector<Option> Options()
{
    std::vector<Option> all = SigningOptions();
    all.push_back(
        {"refresh", nullptr, "only give a new expiry: refuse when a release is declared that is not signed yet"});
    return all;
}

} // namespace

Command SignCommand()
{
    return {
        "sign",
        "DECLARATIONS --sign KEY... [--expires DURATION] [--refresh]",
        "sign what is published",
        "Writes the manifest of all that is declared, with a new expiry, and signs it; the first time the keys become\n"
        "those of the folder. One that waits for more signatures is signed as it is. To be given again before it\n"
        "expires, with --refresh from a timer. See docs/trust.md.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
