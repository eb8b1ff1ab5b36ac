#include <Download/detail/VoGroupDownload.h>

#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Download/VoGroupedDownloadRequest.h>

namespace {

constexpr int ReportInterval = 100; // milliseconds

} // namespace

VoGroupDownload::VoGroupDownload(const VoGroupedDownloadRequest& request, QObject* parent)
    : VoDownload(parent, request.id(), request.policy())
    , m_description(VoString(request.numberRequests()) + " files")
{
    setMonitor(std::make_unique<VoGroupDownloadMonitor>(
        request.numberRequests(), [this] { issueHeaders(); }, [this] { issueFiles(); }));
    for (std::size_t i = 0; i < request.numberRequests(); ++i) {
        const VoPair<VoUrl, VoFilePath>& file = request.files()[i];
        addFile(file.first, file.second, request.sizeLimit(i));
    }
    m_reportTimer.setInterval(ReportInterval);
    connect(&m_reportTimer, &QTimer::timeout, this, [this] { reportProgress(); });
}

VoGroupDownload::~VoGroupDownload() = default;

bool VoGroupDownload::isGrouped() const
{
    return true;
}

VoString VoGroupDownload::description() const
{
    return m_description;
}

std::unique_ptr<VoSingleFileDownloadMonitor> VoGroupDownload::makeFileMonitor(const VoUrl& url,
                                                                              VoAbstractDownloadMonitor::Issue header,
                                                                              VoAbstractDownloadMonitor::Issue body)
{
    return std::make_unique<VoGroupFileDownloadMonitor>(monitor(), vo::detail::DisplayText(url), std::move(header),
                                                        std::move(body));
}

void VoGroupDownload::filesStarted()
{
    m_reportTimer.start();
}

void VoGroupDownload::bytesReceived() {}

void VoGroupDownload::filesEnded()
{
    m_reportTimer.stop();
}
