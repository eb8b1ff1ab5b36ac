#pragma once

#include <Core/VoExport.h>
#include <Download/VoTransferRate.h>

#include <cstdint>

namespace vo::detail {

/// How many bytes may be taken, so that a rate is kept on average: a bucket that fills at that rate, holds half a
/// second's worth, is full at the beginning, and gives up what is taken. Times are in milliseconds of any clock that
/// does not go back.
class VOCORE_PRIVATE_EXPORT RateLimit
{
public:
    explicit RateLimit(const VoTransferRate& rate); ///< No limit unless the rate is positive.

    bool isOn() const noexcept;                      ///< Whether there is a limit.
    std::int64_t allowed(std::int64_t now) noexcept; ///< The bytes that may be taken now; without a limit any number.
    void took(std::int64_t bytes) noexcept;          ///< So many were.
    /// How much of a body may wait to be taken, of `most`: what a server sends ahead counts only when it is taken.
    std::int64_t readAhead(std::int64_t most) const noexcept;

private:
    double m_rate = 0; // bytes in a millisecond; 0 is off
    double m_capacity = 0;
    double m_level = 0;
    std::int64_t m_filled = -1; // when that was the level; -1 before the first time
};

} // namespace vo::detail
