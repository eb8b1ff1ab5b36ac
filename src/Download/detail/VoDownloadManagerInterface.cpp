#include <Download/detail/VoDownloadManagerInterface.h>

#include <Core/VoString.h>
#include <Download/detail/DownloadFailure.h>
#include <FileSystem/VoUrl.h>
#include <Subsystem/VoLogging.h>

namespace {

// The category is that of the requests' main user, whose log shows what it asked for.
vo::logging::Logger& Logger()
{
    static vo::logging::Logger& logger = vo::logging::Logger::Get("updater");
    return logger;
}

} // namespace

VoDownloadManagerInterface::VoDownloadManagerInterface()
{
    qRegisterMetaType<VoDownloadRequestPtr>("VoDownloadRequestPtr");
    qRegisterMetaType<VoGroupedDownloadRequestPtr>("VoGroupedDownloadRequestPtr");
    qRegisterMetaType<VoDownloadTicketPtr>("VoDownloadTicketPtr");
    qRegisterMetaType<VoUUID>("VoUUID");
}

VoDownloadManagerInterface::~VoDownloadManagerInterface() = default;

void VoDownloadManagerInterface::request(const VoDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket)
{
    Logger().diagnostic("Download request for " + vo::detail::DisplayText(request->url()) + " [" +
                        request->id().toString() + "]");
    const std::lock_guard<std::mutex> lock(m_handOver);
    Q_EMIT downloadRequested(request, ticket);
}

void VoDownloadManagerInterface::request(const VoGroupedDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket)
{
    Logger().diagnostic("Download request for " + VoString(request->numberRequests()) + " files [" +
                        request->id().toString() + "]");
    const std::lock_guard<std::mutex> lock(m_handOver);
    Q_EMIT groupedDownloadRequested(request, ticket);
}

void VoDownloadManagerInterface::cancel(const VoUUID& id)
{
    const std::lock_guard<std::mutex> lock(m_handOver);
    Q_EMIT cancelRequested(id);
}

std::mutex& VoDownloadManagerInterface::handOver() noexcept
{
    return m_handOver;
}
