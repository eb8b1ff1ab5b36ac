#pragma once

#include <Download/detail/VoDownload.h>

class VoGroupedDownloadRequest;

/// Runs a VoGroupedDownloadRequest. Its progress is reported by a clock, not by what arrives.
class VOCORE_PRIVATE_EXPORT VoGroupDownload final : public VoDownload
{
    Q_OBJECT

public:
    /// As VoDownload.
    VoGroupDownload(const VoGroupedDownloadRequest& request, QObject* parent);
    ~VoGroupDownload() override;

    bool isGrouped() const override;
    VoString description() const override;

protected:
    std::unique_ptr<VoSingleFileDownloadMonitor> makeFileMonitor(const VoUrl& url,
                                                                 VoAbstractDownloadMonitor::Issue header,
                                                                 VoAbstractDownloadMonitor::Issue body) override;
    void filesStarted() override;
    void bytesReceived() override;
    void filesEnded() override;

private:
    const VoString m_description;
    QTimer m_reportTimer; // runs while files are downloading
};
