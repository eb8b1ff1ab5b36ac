#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/release/Keys.h>

#include <Updater/ReleaseSigner.h>

namespace vo::tool {

using namespace updater;

namespace {

std::optional<std::uint64_t> Threshold(const Arguments& arguments, const char* option)
{
    if (!arguments.has(option))
        return std::nullopt;
    return static_cast<std::uint64_t>(arguments.integer(option, 1, 1, 64));
}

ReleaseSigner::KeyChange ChangeOf(const Arguments& arguments)
{
    ReleaseSigner::KeyChange change;
    const auto add = [&](const char* option, bool signsReleases, bool signsKeys) {
        for (const VoString& text : arguments.texts(option))
            change.added.pushBack({ReadPublicKey(text), signsReleases, signsKeys});
    };
    add("add", true, true);
    add("add-release-key", true, false);
    add("add-root-key", false, true);
    for (const VoString& id : arguments.texts("remove"))
        change.removed.pushBack(id);
    change.releaseThreshold = Threshold(arguments, "threshold");
    change.keyThreshold = Threshold(arguments, "root-threshold");
    return change;
}

void ShowKeys(Console& console, const ReleaseKeys& keys)
{
    console.fact("number", "keys", "number " + VoString(keys.number), keys.number);
    console.fact("threshold", "for releases", VoString(keys.releaseThreshold) + " must sign", keys.releaseThreshold);
    console.fact("rootThreshold", "for keys", VoString(keys.keyThreshold) + " must sign", keys.keyThreshold);
    console.list("list");
    for (const ReleaseKeys::Key& key : keys.keys)
        console.row("list", key.key.id() + (key.signsReleases ? "  releases" : "") + (key.signsKeys ? "  keys" : ""),
                    JsonRecord()("id", key.key.id())("line", key.key.toLine())("releases", key.signsReleases)(
                        "keys", key.signsKeys));
}

ExitCode Rotate(Session& session, const VoFilePath& document)
{
    if (!session.arguments.has("sign"))
        throw UsageError("option --sign is missing");
    const ReleaseSigner::KeyChange change = ChangeOf(session.arguments);
    const ReleaseSigner signer(document, SigningOf(session), [&] { session.stop.throwIfStopped(); });
    const auto state = Doing(session.arguments, "change the keys of", NameOf(session.arguments, VoLocation(document)),
                             [&] { return signer.rotate(change); });
    Console& console = session.console;
    ShowKeys(console, state.keys);
    console.member("inEffect", state.isInEffect);
    if (!state.isInEffect)
        console.note("waiting for signatures: " + VoString(state.missingBefore) + " by the former keys, " +
                     VoString(state.missingOwn) + " by the new ones, and " + VoString(state.missingManifest) +
                     " of the manifest; vo keys rotate --sign KEY adds them");
    return ExitCode::Done;
}

ExitCode Show(Session& session, const VoFilePath& document)
{
    const auto keys = Doing(session.arguments, "read", NameOf(session.arguments, VoLocation(document)),
                            [&] { return ReleaseSigner(document, ReleaseSigning()).keys(); });
    if (!keys)
        throw Failure("nothing is signed beside " + NameOf(session.arguments, VoLocation(document)));
    ShowKeys(session.console, *keys);
    return ExitCode::Done;
}

ExitCode Run(Session& session)
{
    const VoString& what = session.arguments.argument(0);
    const VoFilePath document = session.arguments.fileArgument(1);
    if (what == "show")
        return Show(session, document);
    if (what == "rotate")
        return Rotate(session, document);
    throw UsageError("vo keys: \"" + what + "\" is neither show nor rotate");
}

std::vector<Option> Options()
{
    std::vector<Option> all = {
        {"add", "KEY", "a public key that signs releases and keys from now on", '\0', true},
        {"add-release-key", "KEY", "one that signs releases only, such as that of a timer", '\0', true},
        {"add-root-key", "KEY", "one that signs keys only, to be kept away from machines", '\0', true},
        {"remove", "ID", "the ID of a key that counts no more", '\0', true},
        {"threshold", "K", "how many keys must sign releases"},
        {"root-threshold", "K", "how many keys must sign keys"},
    };
    const std::vector<Option> signing = SigningOptions();
    all.insert(all.end(), signing.begin(), signing.end());
    return all;
}

} // namespace

Command KeysCommand()
{
    return {
        "keys",
        "show DECLARATIONS | rotate DECLARATIONS --sign KEY... [--add KEY]... [--remove ID]... [--threshold K]",
        "show or change the keys that clients believe",
        "Adds, removes and counts the keys of a signed folder. Enough of the former and of the new keys have to sign\n"
        "that; what is missing is waited for, and the same command without a change adds it. Clients follow by\n"
        "themselves.\n",
        Options(),
        2,
        2,
        Run};
}

} // namespace vo::tool
