#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Download/VoDownloadSize.h>
#include <Download/VoTransferRate.h>

#include <cstdint>

/// How much of something is done: bytes, or a count of things. A plain value.
class VOCORE_EXPORT VoDataProgress
{
public:
    /// Nothing of nothing.
    VoDataProgress();
    /// So much done of so much; the total may be unknown.
    VoDataProgress(const VoDownloadSize& processed, const VoDownloadSize& total);

    const VoDownloadSize& processed() const; ///< What is done.
    const VoDownloadSize& total() const;     ///< What there is to do; may be unknown.

private:
    VoDownloadSize m_processed;
    VoDownloadSize m_total;
};

/// How much of a download is done, and how fast it goes. A plain value.
class VOCORE_EXPORT VoDownloadProgress : public VoDataProgress
{
public:
    /// Nothing of nothing, at no rate.
    VoDownloadProgress();
    /// So many bytes done of so many, at a rate; the total may be unknown.
    VoDownloadProgress(const VoDownloadSize& processed, const VoDownloadSize& total, const VoTransferRate& rate);

    const VoTransferRate& transferRate() const; ///< Bytes per second, smoothed.
    /// The remaining bytes over the rate; the longest duration there is while the rate is 0 or the total unknown.
    VoTimeDuration timeRemaining() const;

private:
    VoTransferRate m_transferRate;
};

/// How many files of an uninstallation are done. A plain value.
class VOCORE_EXPORT VoUninstallProgress
{
public:
    /// None of none.
    VoUninstallProgress() = default;
    /// So many files done of so many.
    VoUninstallProgress(std::uint64_t processed, std::uint64_t total);

    std::uint64_t processed() const; ///< Files done.
    std::uint64_t total() const;     ///< Files there are.

private:
    std::uint64_t m_processed = 0;
    std::uint64_t m_total = 0;
};
