#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Signing/Signature.h>
#include <Time/VoTimeDuration.h>
#include <Time/VoTimePoint.h>
#include <Updater/VoUpdater.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace vo::updater {

/// With what a publisher signs. A plain value; copies share the keys.
struct VOCORE_EXPORT ReleaseSigning
{
    /// The keys at hand. Without any, what changes in a signed folder waits for a signature (ReleaseSigner).
    std::vector<std::shared_ptr<const signing::SecretKey>> keys;
    /// How long the manifest may be relied on: clients refuse it afterwards, so it must be signed again before.
    VoTimeDuration lifetime = VoHours(24 * 30);
    VoTimePoint now; ///< When the manifest is made; the beginning of 1970 stands for now.
};

/// To whom a release is offered. A plain value; by default to all, at once.
struct VOCORE_EXPORT ReleaseTerms
{
    VoString channel = VoUpdater::ReleaseChannel; ///< VoUpdater::ReleaseChannel or VoUpdater::BetaChannel.
    std::uint64_t share = 10000;                  ///< How many of 10,000 installations it is offered to.
    VoTimePoint start;                            ///< When the roll-out begins; the beginning of 1970: at once.
    VoVersion from;                               ///< The lowest installed release that it updates; 0.0.0: any.
    VoString notes;                               ///< The URL of its notes; may be empty.
};

/// How a manifest stands after a change.
struct VOCORE_EXPORT ManifestState
{
    std::uint64_t serial = 0;     ///< Its serial number; 0 when the folder has no manifest.
    VoTimePoint expires;          ///< Until when it may be relied on.
    std::uint64_t signatures = 0; ///< How many of the publisher's keys have signed it.
    std::uint64_t needed = 0;     ///< How many must; 0 in a folder that is not signed.
    bool isInEffect = true;       ///< Whether clients see it already; if not, it waits for signatures.
};

} // namespace vo::updater
