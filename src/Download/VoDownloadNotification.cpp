#include <Download/VoDownloadNotification.h>

#include <Core/VoException.h>

namespace {

const char* TypeName(VoDownloadNotification::Type type)
{
    switch (type) {
    case VoDownloadNotification::Complete:
        return "VoDownloadCompleteNotification";
    case VoDownloadNotification::Failed:
        return "VoDownloadFailedNotification";
    case VoDownloadNotification::NetworkStatus:
        return "VoNetworkStatusNotification";
    case VoDownloadNotification::Paused:
        return "VoDownloadPausedNotification";
    case VoDownloadNotification::Progress:
        return "VoDownloadProgressNotification";
    case VoDownloadNotification::Started:
        return "VoDownloadStartedNotification";
    }
    return "VoDownloadNotification";
}

template <typename Kind>
const Kind& CastTo(const VoDownloadNotification& notification, VoDownloadNotification::Type type)
{
    if (const auto* kind = dynamic_cast<const Kind*>(&notification))
        return *kind;
    throw VoInvalidCastException(TypeName(notification.type()), TypeName(type));
}

} // namespace

VoDownloadNotification::VoDownloadNotification(const VoUUID& id)
    : m_id(id)
{
}

VoDownloadNotification::~VoDownloadNotification() = default;

const VoUUID& VoDownloadNotification::id() const noexcept
{
    return m_id;
}

const VoDownloadCompleteNotification& VoDownloadNotification::asCompleteMessage() const
{
    return CastTo<VoDownloadCompleteNotification>(*this, Complete);
}

const VoDownloadFailedNotification& VoDownloadNotification::asFailedMessage() const
{
    return CastTo<VoDownloadFailedNotification>(*this, Failed);
}

const VoNetworkStatusNotification& VoDownloadNotification::asNetworkStatusMessage() const
{
    return CastTo<VoNetworkStatusNotification>(*this, NetworkStatus);
}

const VoDownloadPausedNotification& VoDownloadNotification::asPausedMessage() const
{
    return CastTo<VoDownloadPausedNotification>(*this, Paused);
}

const VoDownloadProgressNotification& VoDownloadNotification::asProgressMessage() const
{
    return CastTo<VoDownloadProgressNotification>(*this, Progress);
}

const VoDownloadStartedNotification& VoDownloadNotification::asStartedMessage() const
{
    return CastTo<VoDownloadStartedNotification>(*this, Started);
}

VoDownloadCompleteNotification::VoDownloadCompleteNotification(const VoUUID& id)
    : VoDownloadNotification(id)
{
}

VoDownloadCompleteNotification::~VoDownloadCompleteNotification() = default;

VoDownloadNotification::Type VoDownloadCompleteNotification::type() const
{
    return Complete;
}

VoDownloadPausedNotification::VoDownloadPausedNotification(const VoUUID& id)
    : VoDownloadNotification(id)
{
}

VoDownloadPausedNotification::~VoDownloadPausedNotification() = default;

VoDownloadNotification::Type VoDownloadPausedNotification::type() const
{
    return Paused;
}

VoDownloadStartedNotification::VoDownloadStartedNotification(const VoUUID& id)
    : VoDownloadNotification(id)
{
}

VoDownloadStartedNotification::~VoDownloadStartedNotification() = default;

VoDownloadNotification::Type VoDownloadStartedNotification::type() const
{
    return Started;
}

VoDownloadFailedNotification::VoDownloadFailedNotification(const VoString& message, const VoUUID& id)
    : VoDownloadFailedNotification(VoDownloadException(message), id)
{
}

VoDownloadFailedNotification::VoDownloadFailedNotification(const VoDownloadException& failure, const VoUUID& id)
    : VoDownloadNotification(id)
    , m_failure(failure)
{
}

VoDownloadFailedNotification::~VoDownloadFailedNotification() = default;

VoDownloadNotification::Type VoDownloadFailedNotification::type() const
{
    return Failed;
}

const VoString& VoDownloadFailedNotification::message() const noexcept
{
    return m_failure.message();
}

const VoDownloadException& VoDownloadFailedNotification::failure() const noexcept
{
    return m_failure;
}

VoNetworkStatusNotification::VoNetworkStatusNotification(Status status)
    : VoDownloadNotification(VoUUID(""))
    , m_status(status)
{
}

VoNetworkStatusNotification::~VoNetworkStatusNotification() = default;

VoDownloadNotification::Type VoNetworkStatusNotification::type() const
{
    return NetworkStatus;
}

VoNetworkStatusNotification::Status VoNetworkStatusNotification::status() const noexcept
{
    return m_status;
}

VoString VoNetworkStatusNotification::statusString() const
{
    switch (m_status) {
    case Connected:
        return "Connected";
    case Disconnected:
        return "Disconnected";
    case Unknown:
        break;
    }
    return "Unknown";
}

VoDownloadProgressNotification::VoDownloadProgressNotification(const VoDownloadSize& received,
                                                               const VoDownloadSize& total, const VoTransferRate& rate,
                                                               const VoUUID& id)
    : VoDownloadNotification(id)
    , m_received(received)
    , m_total(total)
    , m_rate(rate)
{
}

VoDownloadProgressNotification::~VoDownloadProgressNotification() = default;

VoDownloadNotification::Type VoDownloadProgressNotification::type() const
{
    return Progress;
}

const VoDownloadSize& VoDownloadProgressNotification::received() const noexcept
{
    return m_received;
}

const VoDownloadSize& VoDownloadProgressNotification::processed() const noexcept
{
    return m_received;
}

const VoDownloadSize& VoDownloadProgressNotification::total() const noexcept
{
    return m_total;
}

const VoTransferRate& VoDownloadProgressNotification::transferRate() const noexcept
{
    return m_rate;
}
