#include <vo/release/Keys.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Passphrases.h>
#include <vo/line/Paths.h>

#include <Core/VoException.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/detail/documents/XMLDocument.h>

namespace vo::tool {

using namespace updater;

namespace {

constexpr std::uint64_t LargestKey = 4096;

std::shared_ptr<const signing::SecretKey> ReadSecretKey(const Session& session, const VoString& text, std::size_t index)
{
    const VoFilePath file = TypedFile("option --sign", text);
    return Doing(session.arguments, "read", text, [&] {
        const VoString content = updater::detail::ReadDocument(file, LargestKey);
        return std::make_shared<signing::SecretKey>(
            signing::SecretKey::Parse(content, AskPassphrase(session.arguments, text, index)));
    });
}

} // namespace

signing::PublicKey ReadPublicKey(const VoString& text)
{
    try {
        return signing::PublicKey::Parse(text);
    } catch (const VoValidationException&) {
        // It is a file's name.
    }
    try {
        return signing::PublicKey::Parse(updater::detail::ReadDocument(TypedFile("option --key", text), LargestKey));
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
