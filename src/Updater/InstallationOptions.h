#pragma once

namespace vo::updater {

/// How an installation goes about its work. A plain value.
struct InstallationOptions
{
    /// Whether a file that the release adds, and whose bytes an installed file has (it was moved or copied), is copied
    /// from that one, so that its chunks need not be fetched. The installed file is read first to see that it still has
    /// these bytes.
    bool reuseInstalledFiles = false;
};

} // namespace vo::updater
