#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>
#include <vo/release/ReleaseChoice.h>
#include <vo/screen/UpdateProgress.h>

#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/PackageVerifier.h>
#include <Updater/ReleasePatches.h>

namespace vo::tool {

using namespace updater;

namespace {

/// Whether a message tells of a file that is not as its source.
bool IsFinding(const AbstractMessage& message)
{
    return message.type() == AbstractMessage::FileMismatch || message.type() == AbstractMessage::FileMissing;
}

/// Checks the signatures beside a document, and that the definitions which it declares are those that were signed.
void CheckSignatures(const Session& session, const TrustedReleases& releases)
{
    const bool hasKey = session.arguments.has("key");
    if (!releases.manifest() && !hasKey) {
        session.console.note("the releases are not signed");
        return;
    }
    std::size_t checked = 0;
    if (!releases.declarations()) {
        releases.verify(releases.readDefinition()->packageID());
        checked = 1;
    } else {
        for (const AdvertisedPackages::Declaration& declaration : releases.declarations()->declarations()) {
            session.stop.throwIfStopped();
            releases.verify(declaration.packageID());
            releases.read(declaration);
            ++checked;
        }
    }
    session.console.fact("signed", "signed", checked);
    if (releases.manifest())
        session.console.fact("expires", "until", releases.manifest()->expires.toString());
    if (!hasKey)
        session.console.note("only compared with the manifest; --key tells whether the signatures are genuine");
}

/// Tells what is wrong with the patches beside a definition, and how many were checked, and wrong.
struct PatchCheck
{
    std::size_t checked = 0;
    std::size_t findings = 0;
};

PatchCheck CheckPatches(const Session& session, const AdvertisedPackageListing& package, const VoFilePath& definition)
{
    PatchCheck check;
    const VoFilePath document = definition.parent().file(ReleasePatches::FileName);
    if (!VoFileSystem::Exists(document))
        return check;
    const auto require = [&](bool isSound, const char* what, const VoFilePath& path) {
        if (isSound)
            return;
        ++check.findings;
        const VoString text = what + PathText(path);
        session.console.row("findings", text, JsonRecord()("text", text));
    };
    const auto patches = ReleasePatches::Find(package, definition, session.stop, session.downloads);
    require(patches != nullptr, "Patches cannot be used: ", document);
    for (; patches && check.checked < patches->patches.size(); ++check.checked) {
        session.stop.throwIfStopped();
        const ReleasePatches::Patch& patch = patches->patches[check.checked];
        const VoFilePath path = definition.parent().appended(patch.file().path());
        const bool isThere = VoFileSystem::Exists(path);
        require(isThere, "Patch missing: ", path);
        require(!isThere ||
                    (VoFileSystem::FileSize(path) == patch.size && VoFileSystem::Checksum(path) == patch.checksum),
                "Patch does not match its listing: ", path);
        const AdvertisedFileListing* file = package.file(patch.fileID);
        require(file && patch.after.isOf(*file), "Patch makes no file of the release: ", path);
    }
    return check;
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const VoFilePath definition = session.arguments.fileArgument(0);
    const auto source = session.arguments.directory("source");
    if (!source && !session.arguments.has("key"))
        throw UsageError("option --source is missing");
    if (source)
        RequireFolder(session.arguments, *source, "compare with");
    const TrustedReleases releases = OpenTrusted(session, definition);
    Doing(session.arguments, "verify", session.arguments.argument(0), [&] { CheckSignatures(session, releases); });
    if (!source)
        return ExitCode::Done;
    const VoString& name = session.arguments.argument(0);
    auto package = Doing(session.arguments, "read", name, [&] { return AdvertisedPackageListing::Open(definition); });
    const std::size_t files = package->files().size();

    console.list("findings");
    const PatchCheck patches =
        Doing(session.arguments, "verify", name, [&] { return CheckPatches(session, *package, definition); });
    std::size_t findings = patches.findings;
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
    if (patches.checked > 0)
        console.fact("patches", "patches checked", patches.checked);
    console.fact("differences", "differences", findings);
    return matches && patches.findings == 0 ? ExitCode::Done : ExitCode::Differences;
}

std::vector<Option> Options()
{
    std::vector<Option> all = TrustOptions();
    all.insert(all.begin(), {"source", "FOLDER", "the folder that the release was published from"});
    return all;
}

} // namespace

Command VerifyReleaseCommand()
{
    return {"verify-release",
            "PACKAGE.XML|DECLARATIONS [--source FOLDER] [--key KEY]...",
            "check a published release against its source and its signatures",
            "Installs a release into a temporary folder, as onto a machine that has nothing of it, and compares every\n"
            "file byte by byte with the one it was published from. Patches beside it are compared with their list.\n"
            "Where the releases are signed, compares the declarations and all definitions with the manifest, and with\n"
            "--key checks its signatures.\n",
            Options(),
            1,
            1,
            Run};
}

} // namespace vo::tool
