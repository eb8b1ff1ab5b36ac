#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Passphrases.h>
#include <vo/line/Paths.h>
#include <vo/release/Keys.h>

#include <Core/VoException.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryFile.h>
#include <IO/VoFileDevice.h>

namespace vo::tool {
namespace {

constexpr const char* PublicEnd = ".pub";

VoFilePath PublicFile(const VoFilePath& file)
{
    return VoFilePath(file.path() + PublicEnd);
}

/// Under its name it is readable by its owner only, and whole, from the first moment on.
void WriteSecret(const VoFilePath& file, const VoString& text)
{
    VoTemporaryFile secret(file.parent());
    WriteKeyFile(secret.path(), text);
    VoFileSystem::MoveFile(secret.path(), file);
}

void ShowKey(Console& console, const signing::PublicKey& key)
{
    console.fact("id", "key ID", key.id());
    console.fact("line", "public key", key.toLine());
}

ExitCode New(Session& session)
{
    const Arguments& arguments = session.arguments;
    if (arguments.count() != 2)
        throw UsageError("vo key new: the file to write is missing");
    const VoFilePath file = arguments.fileArgument(1);
    const VoString& name = arguments.argument(1);
    for (const VoFilePath& taken : {file, PublicFile(file)}) {
        if (VoFileSystem::Exists(taken))
            throw CommandError{ExitCode::Unsafe, PathText(taken) + " exists already; a key is never replaced"};
    }
    const signing::Passphrase passphrase = AskPassphrase(arguments, name, 0, true);
    if (passphrase.size() == 0)
        throw UsageError("the passphrase is empty");
    const signing::SecretKey key = signing::SecretKey::Generate();
    const auto effort = arguments.has("quick") ? signing::SecretKey::Effort::Quick : signing::SecretKey::Effort::Full;
    Doing(arguments, "write", name, [&] {
        WriteSecret(file, key.toString(passphrase, effort));
        WriteKeyFile(PublicFile(file), key.publicKey().toString());
    });
    ShowKey(session.console, key.publicKey());
    session.console.fact("secret", "secret key", PathText(file));
    session.console.fact("public", "to give away", PathText(PublicFile(file)));
    return ExitCode::Done;
}

ExitCode Show(Session& session)
{
    if (session.arguments.count() != 2)
        throw UsageError("vo key show: the key is missing");
    const VoString& text = session.arguments.argument(1);
    const VoFilePath secret = session.arguments.fileArgument(1);
    ShowKey(session.console, ReadPublicKey(VoFileSystem::Exists(PublicFile(secret)) ? text + PublicEnd : text));
    return ExitCode::Done;
}

ExitCode List(Session& session)
{
    const VoDirectoryPath folder =
        session.arguments.count() == 2 ? session.arguments.directoryArgument(1) : TypedDirectory("folder", ".");
    RequireFolder(session.arguments, folder, "list");
    session.console.list("keys");
    VoFileSystem::ForEachFile(folder, false, false, [&](const VoFilePath& file) {
        if (!file.path().endsWith(PublicEnd))
            return;
        try {
            const auto key = signing::PublicKey::Parse(ReadKeyFile(file));
            const bool hasSecret = VoFileSystem::Exists(
                VoFilePath(VoString(file.path().substring(0, file.path().size() - VoString(PublicEnd).size()))));
            session.console.row("keys",
                                key.id() + "  " + PathText(file) + (hasSecret ? "" : "  without its secret key"),
                                JsonRecord()("id", key.id())("file", PathText(file))("hasSecret", hasSecret));
        } catch (const VoValidationException&) {
            // A file of somebody else with that ending.
        }
    });
    return ExitCode::Done;
}

ExitCode Run(Session& session)
{
    const VoString& what = session.arguments.argument(0);
    if (what == "new")
        return New(session);
    if (what == "show")
        return Show(session);
    if (what == "list")
        return List(session);
    throw UsageError("vo key: \"" + what + "\" is neither new nor show nor list");
}

std::vector<Option> Options()
{
    std::vector<Option> all = PassphraseOptions();
    all.push_back({"quick", nullptr, "16 MiB of memory to open the key instead of 1 GiB: easier to guess, for trials"});
    return all;
}

} // namespace

Command KeyCommand()
{
    return {
        "key",
        "new FILE [--quick] | show FILE|KEY | list [FOLDER]",
        "make and show keys that sign releases",
        "Makes a secret key, encrypted with a passphrase, and its public key beside it (FILE.pub); shows the ID and\n"
        "the line of a public key; lists the public keys in a folder.\n",
        Options(),
        1,
        2,
        Run};
}

} // namespace vo::tool
