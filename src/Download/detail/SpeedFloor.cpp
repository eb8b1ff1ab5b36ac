#include <Download/detail/SpeedFloor.h>

#include <Time/VoTimeDuration.h>

#include <algorithm>

namespace vo::detail {

SpeedFloor::SpeedFloor(const VoTransferRate& rate, const VoTimeDuration& span)
    : m_span(std::max(span.seconds(), 0.0) * 1000)
    , m_least(std::max(rate.bytesPerSecond(), 0.0) * m_span / 1000)
{
}

bool SpeedFloor::isOn() const noexcept
{
    return m_least > 0;
}

void SpeedFloor::restart(std::int64_t now, std::int64_t received) noexcept
{
    m_since = now;
    m_before = received;
}

bool SpeedFloor::isBelow(std::int64_t now, std::int64_t received) noexcept
{
    if (!isOn() || static_cast<double>(now - m_since) < m_span)
        return false;
    const std::int64_t gained = received - m_before;
    restart(now, received);
    // What is due is that of one span, also when the check comes late: the bytes of the meantime may still wait.
    return static_cast<double>(gained) < m_least;
}

} // namespace vo::detail
