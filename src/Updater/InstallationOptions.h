#pragma once

#include <Core/VoExport.h>
#include <Download/VoDownloadPolicy.h>

namespace vo::updater {

/// How an installation goes about its work. A plain value.
struct VOCORE_EXPORT InstallationOptions
{
    /// Whether a file that the release adds, and whose bytes an installed file has (it was moved or copied), is copied
    /// from that one, so that its chunks need not be fetched. The installed file is read first to see that it still has
    /// these bytes.
    bool reuseInstalledFiles = false;

    /// How documents and chunks are fetched from a server; by default every transfer is tried once.
    VoDownloadPolicy downloads;
};

} // namespace vo::updater
