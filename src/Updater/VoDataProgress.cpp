#include <Updater/VoDataProgress.h>

#include <Time/VoTimeDuration.h>

VoDataProgress::VoDataProgress() = default;

VoDataProgress::VoDataProgress(const VoDownloadSize& processed, const VoDownloadSize& total)
    : m_processed(processed)
    , m_total(total)
{
}

const VoDownloadSize& VoDataProgress::processed() const
{
    return m_processed;
}

const VoDownloadSize& VoDataProgress::total() const
{
    return m_total;
}

VoDownloadProgress::VoDownloadProgress() = default;

VoDownloadProgress::VoDownloadProgress(const VoDownloadSize& processed, const VoDownloadSize& total,
                                       const VoTransferRate& rate)
    : VoDataProgress(processed, total)
    , m_transferRate(rate)
{
}

const VoTransferRate& VoDownloadProgress::transferRate() const
{
    return m_transferRate;
}

VoTimeDuration VoDownloadProgress::timeRemaining() const
{
    return (total() - processed()) / m_transferRate;
}

VoUninstallProgress::VoUninstallProgress(std::uint64_t processed, std::uint64_t total)
    : m_processed(processed)
    , m_total(total)
{
}

std::uint64_t VoUninstallProgress::processed() const
{
    return m_processed;
}

std::uint64_t VoUninstallProgress::total() const
{
    return m_total;
}
