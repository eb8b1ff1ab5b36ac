#pragma once

#include <Core/VoUUID.h>

#include <cstddef>
#include <map>
#include <vector>

class VoDownload;

/// The register of live downloads by their ids.
class VoDownloadManagerMonitor
{
public:
    /// Registers a download; false, with an error logged, when its id is taken.
    bool allocate(VoDownload& download);
    void complete(const VoUUID& id);   ///< A download has ended, well or not.
    void deallocate(const VoUUID& id); ///< Forgets a download.

    VoDownload* find(const VoUUID& id) const; ///< A live download; null when there is none.
    std::vector<VoDownload*> all() const;     ///< All live downloads.

private:
    std::map<VoUUID, VoDownload*> m_downloads;
};
