#pragma once

#include <Time/VoTimePoint.h>
#include <Updater/detail/registry/TrustPin.h>

namespace vo::updater {

/// That a release was verified: made by TrustedReleases alone, handed on with InstallationOptions.
class ReleaseProof
{
public:
    detail::TrustPin pin;                   ///< What is remembered when the release is installed.
    std::optional<detail::TrustPin> before; ///< What was remembered when it was verified.
    VoUUID versionID{""};                   ///< The release.
    VoVersion from;                         ///< The lowest installed release that it updates.
    VoTimePoint expires;           ///< Until when the manifest is good; the beginning of 1970: that is not asked.
    bool isOtherPublisher = false; ///< Whether what was remembered counts no more.
};

} // namespace vo::updater
