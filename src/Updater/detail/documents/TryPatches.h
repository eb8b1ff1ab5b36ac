#pragma once

#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Updater/ReleasePatches.h>

#include <functional>
#include <memory>
#include <optional>

namespace vo::updater::detail {

/// The patches of a release, as `read` gives the bytes of their document; null when it gives none, and when they cannot
/// be used, which the log tells. `name` is what it calls the document.
/// @throws VoUserCancelledException
std::shared_ptr<const ReleasePatches> TryPatches(const AbstractPackage& release, const VoString& name,
                                                 const VoStopFlag& stop,
                                                 const std::function<std::optional<VoString>()>& read);

} // namespace vo::updater::detail
