#include <Download/detail/VoDownloadManagerMonitor.h>

#include <Download/detail/VoDownload.h>
#include <Subsystem/VoLogging.h>

namespace {

vo::logging::Logger& Logger()
{
    static vo::logging::Logger& logger = vo::logging::Logger::Get("download");
    return logger;
}

} // namespace

bool VoDownloadManagerMonitor::allocate(VoDownload& download)
{
    if (!m_downloads.emplace(download.id(), &download).second) {
        Logger().error("Download failed to register");
        return false;
    }
    Logger().diagnostic(
        VoString(download.isGrouped() ? "Allocating grouped download requested [" : "Allocating download requested [") +
        download.id().toString() + "] : " + download.description());
    return true;
}

void VoDownloadManagerMonitor::complete(const VoUUID& id)
{
    Logger().diagnostic("Download request complete [" + id.toString() + "]");
}

void VoDownloadManagerMonitor::deallocate(const VoUUID& id)
{
    Logger().diagnostic("Deallocating download request [" + id.toString() + "]");
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
