#include <Download/detail/VoSingleDownload.h>

#include <Download/VoDownloadRequest.h>

namespace {

constexpr qint64 ReportInterval = 100; // milliseconds

} // namespace

VoSingleDownload::VoSingleDownload(const VoDownloadRequest& request, QObject* parent)
    : VoDownload(parent, request.id(), request.policy())
    , m_description(vo::detail::DisplayText(request.url()))
{
    setMonitor(std::make_unique<VoSingleDownloadMonitor>([this] { issueHeaders(); }, [this] { issueFiles(); }));
    addFile(request.url(), request.path(), VoDownloadSize::Unknown());
}

VoSingleDownload::~VoSingleDownload() = default;

bool VoSingleDownload::isGrouped() const
{
    return false;
}

VoString VoSingleDownload::description() const
{
    return m_description;
}

std::unique_ptr<VoSingleFileDownloadMonitor> VoSingleDownload::makeFileMonitor(const VoUrl&,
                                                                               VoAbstractDownloadMonitor::Issue header,
                                                                               VoAbstractDownloadMonitor::Issue body)
{
    return std::make_unique<VoSingleFileDownloadMonitor>(monitor(), std::move(header), std::move(body));
}

void VoSingleDownload::bytesReceived()
{
    if (m_sinceReport.isValid() && m_sinceReport.elapsed() < ReportInterval)
        return;
    m_sinceReport.start();
    reportProgress();
}
