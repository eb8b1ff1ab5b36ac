#include <vo/release/Keys.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Passphrases.h>
#include <vo/line/Paths.h>

#include <Core/VoException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoWholeFile.h>

#include <utility>

namespace vo::tool {

using namespace updater;

namespace {

constexpr std::size_t LargestKey = 4096;

std::shared_ptr<const signing::SecretKey> ReadSecretKey(const Session& session, const VoString& text, std::size_t index)
{
    const VoFilePath file = TypedFile("option --sign", text);
    return Doing(session.arguments, "read", text, [&] {
        const VoString content = ReadKeyFile(file);
        return std::make_shared<signing::SecretKey>(
            signing::SecretKey::Parse(content, AskPassphrase(session.arguments, text, index)));
    });
}

} // namespace

VoString ReadKeyFile(const VoFilePath& file)
{
    auto content = ReadWholeFile(file, LargestKey);
    if (!content)
        throw VoValidationException("Document larger than allowed: " + file.path());
    return VoString(std::move(*content));
}

void WriteKeyFile(const VoFilePath& file, const VoString& text)
{
    VoAtomicFileWriter writer(file);
    writer.write(text.c_str(), text.size());
    writer.commit();
}

signing::PublicKey ReadPublicKey(const VoString& text)
{
    try {
        return signing::PublicKey::Parse(text);
    } catch (const VoValidationException&) {
        // It is a file's name.
    }
    try {
        return signing::PublicKey::Parse(ReadKeyFile(TypedFile("option --key", text)));
    } catch (const VoValidationException&) {
        throw UsageError("option --key: \"" + text + "\" is not a public key");
    } catch (const VoException& failure) {
        throw UsageError("option --key: \"" + text + "\" is neither a public key nor a file that can be read");
    }
}

std::vector<Option> SigningOptions()
{
    std::vector<Option> options = {
        {"sign", "KEY", "sign with the secret key in this file; may be given again", '\0', true},
        {"expires", "DURATION", "for how long clients may rely on it, such as 12h or 30d (the default)"},
    };
    const std::vector<Option> passphrases = PassphraseOptions();
    options.insert(options.end(), passphrases.begin(), passphrases.end());
    return options;
}

ReleaseSigning SigningOf(const Session& session)
{
    ReleaseSigning signing;
    if (const auto text = session.arguments.text("expires")) {
        const auto lifetime = ParseDuration(*text);
        if (!lifetime || *lifetime <= VoSeconds(0))
            throw UsageError("option --expires: \"" + *text + "\" is not a duration such as 12h or 30d");
        signing.lifetime = *lifetime;
    }
    for (const VoString& text : session.arguments.texts("sign"))
        signing.keys.push_back(ReadSecretKey(session, text, signing.keys.size()));
    return signing;
}

void ShowManifest(Session& session, const ManifestState& state)
{
    if (state.serial == 0)
        return;
    Console& console = session.console;
    console.fact("serial", "manifest", "serial " + VoString(state.serial), state.serial);
    console.fact("expires", "expires", state.expires.toString());
    console.fact("signatures", "signatures", VoString(state.signatures) + " of " + VoString(state.needed),
                 state.signatures);
    console.member("inEffect", state.isInEffect);
    if (!state.isInEffect)
        console.note("it waits for more signatures, and clients see the former state; vo sign --sign KEY signs it");
}

} // namespace vo::tool
