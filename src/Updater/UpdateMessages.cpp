#include <Updater/UpdateMessages.h>

#include <Download/VoDownloadSize.h>
#include <Time/VoTimeDuration.h>

namespace vo::updater {

namespace {

std::uint64_t CountOf(const VoDownloadSize& number)
{
    return number.isUnknown() ? 0 : static_cast<std::uint64_t>(number.bytes());
}

} // namespace

AbstractMessage::~AbstractMessage() = default;

AbstractUpdateMessage::AbstractUpdateMessage(const VoUUID& packageID, const VoUUID& versionID)
    : AbstractUpdateMessage(VoString(), packageID, versionID)
{
}

AbstractUpdateMessage::AbstractUpdateMessage(const VoString& message, const VoUUID& packageID, const VoUUID& versionID)
    : m_message(message)
    , m_packageID(packageID)
    , m_versionID(versionID)
{
}

AbstractUpdateMessage::~AbstractUpdateMessage() = default;

const VoString& AbstractUpdateMessage::message() const
{
    return m_message;
}

const VoUUID& AbstractUpdateMessage::packageID() const
{
    return m_packageID;
}

const VoUUID& AbstractUpdateMessage::versionID() const
{
    return m_versionID;
}

AbstractUninstallMessage::AbstractUninstallMessage(const VoUUID& packageID)
    : m_packageID(packageID)
{
}

AbstractUninstallMessage::~AbstractUninstallMessage() = default;

const VoUUID& AbstractUninstallMessage::packageID() const
{
    return m_packageID;
}

template <int N>
BasicUpdateMessage<N>::BasicUpdateMessage(const VoUUID& packageID, const VoUUID& versionID)
    : AbstractUpdateMessage(packageID, versionID)
{
}

template <int N>
BasicUpdateMessage<N>::BasicUpdateMessage(const VoString& message, const VoUUID& packageID, const VoUUID& versionID)
    : AbstractUpdateMessage(message, packageID, versionID)
{
}

template <int N>
BasicUpdateMessage<N>::~BasicUpdateMessage() = default;

template <int N>
AbstractMessage::Type BasicUpdateMessage<N>::type() const
{
    return static_cast<Type>(N);
}

template <int N>
BasicUninstallMessage<N>::BasicUninstallMessage(const VoUUID& packageID)
    : AbstractUninstallMessage(packageID)
{
}

template <int N>
BasicUninstallMessage<N>::~BasicUninstallMessage() = default;

template <int N>
AbstractMessage::Type BasicUninstallMessage<N>::type() const
{
    return static_cast<Type>(N);
}

#define VOCORE_MESSAGE(name, level) template class BasicUpdateMessage<AbstractMessage::name>;
VOCORE_BASIC_UPDATE_MESSAGES(VOCORE_MESSAGE)
#undef VOCORE_MESSAGE
#define VOCORE_MESSAGE(name, level) template class BasicUninstallMessage<AbstractMessage::name>;
VOCORE_BASIC_UNINSTALL_MESSAGES(VOCORE_MESSAGE)
#undef VOCORE_MESSAGE

DownloadProgressMessage::DownloadProgressMessage(const VoDownloadSize& processed, const VoDownloadSize& total,
                                                 const VoTransferRate& rate, const VoUUID& packageID,
                                                 const VoUUID& versionID)
    : DownloadProgressMessage(VoDownloadProgress(processed, total, rate), packageID, versionID)
{
}

DownloadProgressMessage::DownloadProgressMessage(const VoDownloadProgress& progress, const VoUUID& packageID,
                                                 const VoUUID& versionID)
    : AbstractUpdateMessage(packageID, versionID)
    , m_progress(progress)
{
}

DownloadProgressMessage::~DownloadProgressMessage() = default;

AbstractMessage::Type DownloadProgressMessage::type() const
{
    return DownloadProgress;
}

const VoDownloadProgress& DownloadProgressMessage::progress() const
{
    return m_progress;
}

const VoDownloadSize& DownloadProgressMessage::processed() const
{
    return m_progress.processed();
}

const VoDownloadSize& DownloadProgressMessage::received() const
{
    return processed();
}

const VoDownloadSize& DownloadProgressMessage::total() const
{
    return m_progress.total();
}

const VoTransferRate& DownloadProgressMessage::transferRate() const
{
    return m_progress.transferRate();
}

VoTimeDuration DownloadProgressMessage::timeRemaining() const
{
    return m_progress.timeRemaining();
}

InstallationProgressMessage::InstallationProgressMessage(const VoDownloadSize& processed, const VoDownloadSize& total,
                                                         const VoUUID& packageID, const VoUUID& versionID)
    : AbstractUpdateMessage(packageID, versionID)
    , m_progress(processed, total)
{
}

InstallationProgressMessage::~InstallationProgressMessage() = default;

AbstractMessage::Type InstallationProgressMessage::type() const
{
    return InstallationProgress;
}

const VoDataProgress& InstallationProgressMessage::progress() const
{
    return m_progress;
}

const VoDownloadSize& InstallationProgressMessage::processed() const
{
    return m_progress.processed();
}

const VoDownloadSize& InstallationProgressMessage::total() const
{
    return m_progress.total();
}

std::uint64_t InstallationProgressMessage::filesProcessed() const
{
    return CountOf(processed());
}

std::uint64_t InstallationProgressMessage::filesTotal() const
{
    return CountOf(total());
}

VerificationProgressMessage::VerificationProgressMessage(std::uint64_t processed, std::uint64_t total,
                                                         const VoUUID& packageID, const VoUUID& versionID)
    : VerificationProgressMessage(VoString(), processed, total, packageID, versionID)
{
}

VerificationProgressMessage::VerificationProgressMessage(const VoString& message, std::uint64_t processed,
                                                         std::uint64_t total, const VoUUID& packageID,
                                                         const VoUUID& versionID)
    : AbstractUpdateMessage(message, packageID, versionID)
    , m_processed(processed)
    , m_total(total)
{
}

VerificationProgressMessage::~VerificationProgressMessage() = default;

AbstractMessage::Type VerificationProgressMessage::type() const
{
    return VerificationProgress;
}

std::uint64_t VerificationProgressMessage::processed() const
{
    return m_processed;
}

std::uint64_t VerificationProgressMessage::total() const
{
    return m_total;
}

UninstallProgressMessage::UninstallProgressMessage(std::uint64_t processed, std::uint64_t total,
                                                   const VoUUID& packageID)
    : AbstractUninstallMessage(packageID)
    , m_progress(processed, total)
{
}

UninstallProgressMessage::~UninstallProgressMessage() = default;

AbstractMessage::Type UninstallProgressMessage::type() const
{
    return UninstallProgress;
}

const VoUninstallProgress& UninstallProgressMessage::progress() const
{
    return m_progress;
}

std::uint64_t UninstallProgressMessage::processed() const
{
    return m_progress.processed();
}

std::uint64_t UninstallProgressMessage::total() const
{
    return m_progress.total();
}

UninstallFailedMessage::UninstallFailedMessage(const VoString& message, const VoUUID& packageID)
    : AbstractUninstallMessage(packageID)
    , m_message(message)
{
}

UninstallFailedMessage::~UninstallFailedMessage() = default;

AbstractMessage::Type UninstallFailedMessage::type() const
{
    return UninstallFailed;
}

const VoString& UninstallFailedMessage::message() const
{
    return m_message;
}

PackagesUpdatedMessage::PackagesUpdatedMessage() = default;
PackagesUpdatedMessage::~PackagesUpdatedMessage() = default;

AbstractMessage::Type PackagesUpdatedMessage::type() const
{
    return PackagesUpdated;
}

} // namespace vo::updater
