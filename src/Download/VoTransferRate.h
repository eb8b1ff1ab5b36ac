#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <iosfwd>

/// A speed of transfer in bytes per second. Units are decimal: a kilobyte is 1000 bytes.
///
/// A rate is always a finite number: results beyond that are the largest one, not a number is 0.
class VOCORE_EXPORT VoTransferRate
{
public:
    VoTransferRate() noexcept = default;                     ///< No transfer.
    explicit VoTransferRate(double bytesPerSecond) noexcept; ///< So many bytes per second.

    /// `size` over `duration`; 0 when the size is unknown or the duration is not positive.
    VoTransferRate(const VoDownloadSize& size, const VoTimeDuration& duration) noexcept;

    double bytesPerSecond() const noexcept;     ///< In bytes per second.
    double kilobytesPerSecond() const noexcept; ///< In 1000 bytes per second.
    double megabytesPerSecond() const noexcept; ///< In 1000000 bytes per second.
    double gigabytesPerSecond() const noexcept; ///< In 1000000000 bytes per second.
    double terabytesPerSecond() const noexcept; ///< In 1000000000000 bytes per second.

    VoTransferRate& operator+=(const VoTransferRate& other) noexcept;     ///< Adds a rate.
    VoTransferRate& operator*=(double factor) noexcept;                   ///< Multiplies.
    VoTransferRate operator+(const VoTransferRate& other) const noexcept; ///< The rate of both together.
    VoTransferRate operator*(double factor) const noexcept;               ///< This rate so many times.

    bool operator==(std::nullptr_t) const noexcept; ///< Whether nothing is transferred: the rate is 0.
    bool operator!=(std::nullptr_t) const noexcept; ///< Whether the rate is other than 0.

    /// @name Comparison
    /// @{
    bool operator==(const VoTransferRate& other) const noexcept; ///< Same rate.
    bool operator!=(const VoTransferRate& other) const noexcept; ///< Other rate.
    bool operator<(const VoTransferRate& other) const noexcept;  ///< Slower.
    /// @}

    /// For people, with one decimal and two blanks before the unit: "999.0  bytes/s", "12.5  kB/s", "2.0  MB/s".
    VoString toString() const;

private:
    double m_bytesPerSecond = 0;
};

/// @relates VoTransferRate
/// The time to transfer `size` at `rate`. The longest duration when the size is unknown, nothing is transferred or
/// the time would not fit.
VOCORE_EXPORT VoTimeDuration operator/(const VoDownloadSize& size, const VoTransferRate& rate) noexcept;

/// @relates VoTransferRate
/// Writes toString().
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoTransferRate& rate);
