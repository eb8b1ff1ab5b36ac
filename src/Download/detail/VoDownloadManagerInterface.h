#pragma once

#include <Core/VoExport.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadRequest.h>
#include <Download/VoGroupedDownloadRequest.h>
#include <Download/detail/DownloadTicket.h>

#include <QtCore/QMetaType>
#include <QtCore/QObject>

#include <mutex>

using VoDownloadRequestPtr = VoSharedPtr<VoDownloadRequest>;
using VoGroupedDownloadRequestPtr = VoSharedPtr<VoGroupedDownloadRequest>;

Q_DECLARE_METATYPE(VoDownloadRequestPtr)
Q_DECLARE_METATYPE(VoGroupedDownloadRequestPtr)
Q_DECLARE_METATYPE(VoDownloadTicketPtr)
Q_DECLARE_METATYPE(VoUUID)

/// Takes requests on any thread and hands them, as queued signals, to the engine's thread.
class VOCORE_PRIVATE_EXPORT VoDownloadManagerInterface : public QObject
{
    Q_OBJECT

public:
    VoDownloadManagerInterface(); ///< Registers the types of the signals' arguments.
    ~VoDownloadManagerInterface() override;

    /// Hand over a request, in the order of the calls of one thread. @{
    void request(const VoDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket);
    void request(const VoGroupedDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket);
    void cancel(const VoUUID& id);
    /// @}

    /// Held while a request is handed over; the engine takes it once before it looks at one. The framework's own queue
    /// orders the two threads already, but by means that race detectors cannot see.
    std::mutex& handOver() noexcept;

Q_SIGNALS:
    void downloadRequested(const VoDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket);
    void groupedDownloadRequested(const VoGroupedDownloadRequestPtr& request, const VoDownloadTicketPtr& ticket);
    void cancelRequested(const VoUUID& id);

private:
    std::mutex m_handOver;
};
