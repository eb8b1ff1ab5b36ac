#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/release/ManifestEdit.h>

#include <Core/VoException.h>
#include <Time/VoDateTime.h>

namespace vo::tool {
namespace {

std::uint64_t RequiredShare(const Arguments& arguments)
{
    const VoString text = arguments.requiredText("share");
    const auto share = ParseShare(text);
    if (!share)
        throw UsageError("option --share: \"" + text + "\" is not a share such as 20%");
    return *share;
}

std::optional<VoTimePoint> Start(const Arguments& arguments)
{
    const auto text = arguments.text("start");
    if (!text)
        return std::nullopt;
    try {
        return VoDateTime::Deserialize(*text).timePoint();
    } catch (const VoException&) {
        throw UsageError("option --start: \"" + *text + "\" is not an instant such as 2030-01-31T08:00:00Z");
    }
}

ExitCode Run(Session& session)
{
    const std::uint64_t share = RequiredShare(session.arguments);
    const auto start = Start(session.arguments);
    const ExitCode code = EditRelease(session, [&](updater::ReleaseManifest::Release& release) {
        release.share = share;
        if (start)
            release.start = *start;
    });
    session.console.fact("share", "share", ShareText(share), share);
    return code;
}

std::vector<Option> Options()
{
    std::vector<Option> all = ManifestEditOptions();
    all.insert(all.begin(), {{"share", "SHARE", "to how many installations the release is offered, such as 20%"},
                             {"start", "INSTANT", "when that begins, such as 2030-01-31T08:00:00Z"}});
    return all;
}

} // namespace

Command RolloutCommand()
{
    return {"rollout",
            "DECLARATIONS --share SHARE [--start INSTANT] [--package ID] [--release V] [--sign KEY]...",
            "offer a release to a share of the installations",
            "Offers a release to so many installations, chosen by a number that each keeps for itself; a larger share\n"
            "later takes in those of the smaller one.\n",
            Options(),
            1,
            1,
            Run};
}

} // namespace vo::tool
