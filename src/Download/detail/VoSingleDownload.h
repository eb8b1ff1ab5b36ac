#pragma once

#include <Download/detail/VoDownload.h>

class VoDownloadRequest;

/// Runs a VoDownloadRequest.
class VOCORE_PRIVATE_EXPORT VoSingleDownload final : public VoDownload
{
    Q_OBJECT

public:
    /// As VoDownload.
    VoSingleDownload(const VoDownloadRequest& request, QObject* parent);
    ~VoSingleDownload() override;

    bool isGrouped() const override;
    VoString description() const override;

protected:
    std::unique_ptr<VoSingleFileDownloadMonitor> makeFileMonitor(const VoUrl& url,
                                                                 VoAbstractDownloadMonitor::Issue header,
                                                                 VoAbstractDownloadMonitor::Issue body) override;
    void bytesReceived() override;

private:
    const VoString m_description;
    QElapsedTimer m_sinceReport;
};
