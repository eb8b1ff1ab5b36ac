#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Download/VoTransferRate.h>

#include <cstdint>

namespace vo::detail {

/// Tells when a transfer is slower than is put up with: when fewer bytes come in a span of time than the rate makes of
/// it. The spans follow each other, so that a transfer that becomes slow is found out within two of them. Times are in
/// milliseconds of any clock that does not go back.
class VOCORE_PRIVATE_EXPORT SpeedFloor
{
public:
    /// Nothing is too slow unless both are positive.
    SpeedFloor(const VoTransferRate& rate, const VoTimeDuration& span);

    bool isOn() const noexcept; ///< Whether anything may be too slow.
    /// Begins a span, with so many bytes received before it.
    void restart(std::int64_t now, std::int64_t received) noexcept;
    /// Whether a span is over that was too slow; the next one begins where one is over.
    bool isBelow(std::int64_t now, std::int64_t received) noexcept;

private:
    double m_span = 0;  // in milliseconds
    double m_least = 0; // bytes in a span; 0 is off
    std::int64_t m_since = 0;
    std::int64_t m_before = 0;
};

} // namespace vo::detail
