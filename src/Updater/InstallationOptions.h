#pragma once

#include <Core/VoExport.h>
#include <Download/VoDownloadPolicy.h>

#include <memory>

namespace vo::updater {

class ReleaseProof;

/// How an installation goes about its work. A plain value.
struct VOCORE_EXPORT InstallationOptions
{
    /// Whether a file that the release adds, and whose bytes an installed file has (it was moved or copied), is copied
    /// from that one, so that its chunks need not be fetched. The installed file is read first to see that it still has
    /// these bytes.
    bool reuseInstalledFiles = false;

    /// Whether a file that no package owns and that has another content than the release's file for its place ends the
    /// installation before anything changes ("File belongs to no package: " + path) instead of being replaced with a
    /// warning. One with the same content is taken over either way.
    bool refuseForeignFiles = false;
    /// Whether a package that is installed in another directory stays there ("Package is installed in another
    /// directory: " + path) instead of moving.
    bool refuseOtherDirectory = false;
    /// Whether a release older than the installed one is refused ("Release is older than the installed one: " +
    /// version) instead of being installed with a warning.
    bool refuseOlder = false;

    /// Whether every file is read at the end to see that it is right. Else one that the release leaves as it is, and
    /// that an installation found right before, is read only when the system tells of a change of it since, or when
    /// there is any doubt about that.
    bool examineAll = false;

    /// That the release was verified (TrustedReleases): its publisher is remembered, and from then on releases of the
    /// package without such a proof, or of another publisher, are refused. Null: nobody has verified it.
    std::shared_ptr<const ReleaseProof> proof;

    /// How documents and chunks are fetched from a server; by default every transfer is tried once. Its onReceived
    /// hears of documents.
    VoDownloadPolicy downloads;
};

} // namespace vo::updater
