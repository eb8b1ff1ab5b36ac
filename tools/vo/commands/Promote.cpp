#include <vo/Session.h>
#include <vo/release/ManifestEdit.h>

#include <Updater/VoUpdater.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    return EditRelease(session,
                       [](updater::ReleaseManifest::Release& release) { release.channel = VoUpdater::ReleaseChannel; });
}

} // namespace

Command PromoteCommand()
{
    return {"promote",
            "DECLARATIONS [--package ID] [--release V] [--sign KEY]...",
            "release what was published as a beta",
            "Moves a release from the channel beta to the channel release, so that every installation is offered it.\n",
            ManifestEditOptions(),
            1,
            1,
            Run};
}

} // namespace vo::tool
