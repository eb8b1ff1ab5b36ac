#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>

class QUrl;

namespace vo::detail {

/// The hosts that redirects may lead to. An empty text allows none.
struct RedirectHosts
{
    VoString primary;   ///< One host, allowed exactly.
    VoString secondary; ///< A domain: itself and every host below it.
};

/// What becomes of a redirect.
enum class RedirectVerdict
{
    Approved,
    UnsafeScheme, ///< The scheme changes, and not to https.
    UnsafeDomain  ///< The host is not one of those allowed.
};

/// Decides about a redirect from one URL to another. Where both URLs are on one host, that is no reason to allow it:
/// the hosts are those of the deployment, whoever sends there.
VOCORE_PRIVATE_EXPORT RedirectVerdict RedirectDecision(const QUrl& from, const QUrl& to, const RedirectHosts& hosts);

} // namespace vo::detail
