#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <iosfwd>
#include <memory>

/// The speed of a running transfer, smoothed over its last 16 samples. Each sample is the number of bytes received so
/// far and the time of that.
///
/// One thread at a time.
class VOCORE_EXPORT VoTransferRateMonitor
{
public:
    VoTransferRateMonitor();
    VoTransferRateMonitor(const VoTransferRateMonitor& other);                ///< Copies the samples.
    VoTransferRateMonitor(VoTransferRateMonitor&& other) noexcept;            ///< `other` has no samples afterwards.
    VoTransferRateMonitor& operator=(const VoTransferRateMonitor& other);     ///< Copies the samples.
    VoTransferRateMonitor& operator=(VoTransferRateMonitor&& other) noexcept; ///< `other` has no samples afterwards.
    ~VoTransferRateMonitor();

    /// Adds a sample taken now, by a clock that does not jump when the system's time is set.
    void update(const VoDownloadSize& received);

    /// Adds a sample taken at `time`. The oldest of 16 samples makes place.
    void update(const VoDownloadSize& received, const VoTimePoint& time);

    /// The bytes gained from the oldest to the newest sample over the time between them. 0 with fewer than two samples,
    /// when no time has passed, when bytes were lost (the transfer began anew), or when one of the two sizes is
    /// unknown.
    VoTransferRate value() const;

    VoString toString() const; ///< The text of value().

private:
    struct Private;

    Private& samples();

    std::unique_ptr<Private> m_private;
};

/// @relates VoTransferRateMonitor
/// `text` followed by the monitor's toString().
VOCORE_EXPORT VoString operator+(const char* text, const VoTransferRateMonitor& monitor);

/// @relates VoTransferRateMonitor
/// Writes toString().
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoTransferRateMonitor& monitor);
