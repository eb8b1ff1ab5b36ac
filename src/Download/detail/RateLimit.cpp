#include <Download/detail/RateLimit.h>

#include <algorithm>
#include <limits>

namespace vo::detail {

namespace {

constexpr double BurstTime = 500; // milliseconds; more than a busy event loop oversleeps, so that nothing is lost by it
constexpr std::int64_t LeastReadAhead = 4096;

} // namespace

RateLimit::RateLimit(const VoTransferRate& rate)
    : m_rate(std::max(rate.bytesPerSecond(), 0.0) / 1000)
    , m_capacity(std::max(m_rate * BurstTime, 1.0))
    , m_level(m_capacity)
{
}

bool RateLimit::isOn() const noexcept
{
    return m_rate > 0;
}

std::int64_t RateLimit::allowed(std::int64_t now) noexcept
{
    constexpr std::int64_t any = std::numeric_limits<std::int64_t>::max();
    if (!isOn())
        return any;
    if (m_filled >= 0)
        m_level = std::min(m_capacity, m_level + m_rate * static_cast<double>(now - m_filled));
    m_filled = now;
    return m_level >= static_cast<double>(any) ? any : static_cast<std::int64_t>(m_level);
}

void RateLimit::took(std::int64_t bytes) noexcept
{
    m_level -= static_cast<double>(bytes);
}

std::int64_t RateLimit::readAhead(std::int64_t most) const noexcept
{
    if (!isOn() || m_capacity >= static_cast<double>(most))
        return most;
    return std::max(LeastReadAhead, static_cast<std::int64_t>(m_capacity));
}

} // namespace vo::detail
