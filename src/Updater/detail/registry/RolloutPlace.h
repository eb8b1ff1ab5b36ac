#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>

namespace vo::updater::detail {

/// The place of this installation among 10,000 in the roll-out of a release, other for each release: its random number
/// hashed with the release's ID. A share of 2,000 reaches the places below 2,000.
///
///     <update directory>\installed\rollout.id    the number, made at random when it is first asked for
///
/// Where it can be neither read nor kept, the place is the last: such an installation gets a release when all do.
VOCORE_PRIVATE_EXPORT std::uint64_t RolloutPlace(const VoUUID& versionID);

} // namespace vo::updater::detail
