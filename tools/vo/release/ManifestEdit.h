#pragma once

#include <vo/line/Command.h>

#include <Updater/ReleaseManifest.h>

#include <functional>
#include <vector>

namespace vo::tool {

class Session;

/// The options that name a published release, and those of signing.
std::vector<Option> ManifestEditOptions();

/// Changes what the manifest of the document that the command names says of a release: the one that --package and
/// --release name, or the newest. Shows how the manifest stands.
ExitCode EditRelease(Session& session, const std::function<void(updater::ReleaseManifest::Release&)>& edit);

} // namespace vo::tool
