#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/screen/UpdateProgress.h>

#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/PackageVerifier.h>

namespace vo::tool {

using namespace updater;

namespace {

/// Whether a message tells of a file that is not as its source.
bool IsFinding(const AbstractMessage& message)
{
    return message.type() == AbstractMessage::FileMismatch || message.type() == AbstractMessage::FileMissing;
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const VoFilePath definition = session.arguments.fileArgument(0);
    const auto source = session.arguments.directory("source");
    if (!source)
        throw UsageError("option --source is missing");
    RequireFolder(session.arguments, *source, "compare with");
    const VoString& name = session.arguments.argument(0);
    auto package = Doing(session.arguments, "read", name, [&] { return AdvertisedPackageListing::Open(definition); });
    const std::size_t files = package->files().size();

    std::size_t findings = 0;
    console.list("findings");
    const bool matches = Doing(session.arguments, "verify", name, [&] {
        return PackageVerifier::Verify(
            std::move(package), definition, *source,
            [&](const VoSharedPtr<AbstractMessage>& message) {
                ShowUpdateMessage(console, message);
                const auto* update = dynamic_cast<const AbstractUpdateMessage*>(message.get());
                if (update == nullptr || !IsFinding(*message))
                    return;
                ++findings;
                const VoString text = TextOfLibrary(update->message());
                console.row("findings", text, JsonRecord()("text", text));
            },
            session.stop);
    });
    console.endProgress();
    console.fact("files", "files checked", files);
    console.fact("differences", "differences", findings);
    return matches ? ExitCode::Done : ExitCode::Differences;
}

} // namespace

Command VerifyReleaseCommand()
{
    return {"verify-release",
            "PACKAGE.XML --source FOLDER",
            "check a published release against its source",
            "Installs a release into a temporary folder, as onto a machine that has nothing of it, and compares every\n"
            "file byte by byte with the one it was published from.\n",
            {{"source", "FOLDER", "the folder that the release was published from"}},
            1,
            1,
            Run};
}

} // namespace vo::tool
