#include <Download/detail/VoDownloadManagerMonitor.h>

#include <Download/detail/DownloadLog.h>
#include <Download/detail/VoDownload.h>

using vo::detail::DownloadLog;

bool VoDownloadManagerMonitor::allocate(VoDownload& download)
{
    if (!m_downloads.emplace(download.id(), &download).second) {
        DownloadLog().error("Download failed to register");
        return false;
    }
    DownloadLog().diagnostic(
        VoString(download.isGrouped() ? "Allocating grouped download requested [" : "Allocating download requested [") +
        download.id().toString() + "] : " + download.description());
    return true;
}

void VoDownloadManagerMonitor::complete(const VoUUID& id)
{
    DownloadLog().diagnostic("Download request complete [" + id.toString() + "]");
}

void VoDownloadManagerMonitor::deallocate(const VoUUID& id)
{
    DownloadLog().diagnostic("Deallocating download request [" + id.toString() + "]");
    m_downloads.erase(id);
}

VoDownload* VoDownloadManagerMonitor::find(const VoUUID& id) const
{
    const auto found = m_downloads.find(id);
    return found == m_downloads.end() ? nullptr : found->second;
}

std::vector<VoDownload*> VoDownloadManagerMonitor::all() const
{
    std::vector<VoDownload*> downloads;
    for (const auto& [id, download] : m_downloads)
        downloads.push_back(download);
    return downloads;
}
