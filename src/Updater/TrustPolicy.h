#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Signing/Signature.h>
#include <Time/VoTimePoint.h>
#include <Updater/VoUpdater.h>

#include <cstdint>

namespace vo::updater {

/// Whom an installation believes. A plain value; the default believes everybody, except about packages that came from
/// signed releases before (TrustedReleases).
struct VOCORE_EXPORT TrustPolicy
{
    /// The keys that the application knows. They verify a package's first installation and lead to the publisher's
    /// newest ones; afterwards those that were seen last count instead. With keys a signature is required.
    VoDeque<signing::PublicKey> keys;
    std::uint64_t threshold = 1;   ///< How many of the keys must have signed what they are to vouch for.
    bool requireSignature = false; ///< Whether releases without a signature are refused, even if no key is known.
    bool allowExpired = false;     ///< Whether an expired manifest is believed all the same.
    /// Whether an installed package may go over to the publisher whom the keys above vouch for. What was remembered of
    /// the former one is forgotten then.
    bool allowOtherPublisher = false;
    VoString channel = VoUpdater::ReleaseChannel; ///< Who follows VoUpdater::BetaChannel is offered both kinds.
    /// When the manifest is judged; the beginning of 1970 stands for now.
    VoTimePoint now;
};

} // namespace vo::updater
