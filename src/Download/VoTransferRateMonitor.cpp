#include <Download/VoTransferRateMonitor.h>

#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>
#include <Download/VoTransferRate.h>
#include <Download/detail/VoSampleRing.h>
#include <Time/VoTimePoint.h>

#include <chrono>
#include <cstdint>
#include <ostream>

namespace {

constexpr std::size_t SampleCount = 16;

struct Sample
{
    VoDownloadSize received;
    VoTimePoint time;
};

// The system's time when first asked, from then on by a clock that does not jump.
VoTimePoint SteadyNow()
{
    using Clock = std::chrono::steady_clock;
    static const Clock::time_point start = Clock::now();
    static const VoTimePoint startTime = VoTimePoint::Now();
    return startTime + VoTimeDuration(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start));
}

// The time from one instant to a later one, which may be longer than a duration can hold.
double Seconds(VoTimePoint from, VoTimePoint to)
{
    const auto nanoseconds = static_cast<std::uint64_t>(to.timeSinceEpoch().count()) -
                             static_cast<std::uint64_t>(from.timeSinceEpoch().count());
    return static_cast<double>(nanoseconds) / 1e9;
}

} // namespace

struct VoTransferRateMonitor::Private
{
    VoSampleRing<Sample> ring{SampleCount};
};

VoTransferRateMonitor::VoTransferRateMonitor() = default;

VoTransferRateMonitor::VoTransferRateMonitor(const VoTransferRateMonitor& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}

VoTransferRateMonitor::VoTransferRateMonitor(VoTransferRateMonitor&& other) noexcept = default;

VoTransferRateMonitor& VoTransferRateMonitor::operator=(const VoTransferRateMonitor& other)
{
    if (this != &other)
        *this = VoTransferRateMonitor(other);
    return *this;
}

VoTransferRateMonitor& VoTransferRateMonitor::operator=(VoTransferRateMonitor&& other) noexcept = default;

VoTransferRateMonitor::~VoTransferRateMonitor() = default;

void VoTransferRateMonitor::update(const VoDownloadSize& received)
{
    update(received, SteadyNow());
}

void VoTransferRateMonitor::update(const VoDownloadSize& received, const VoTimePoint& time)
{
    samples().ring.add({received, time});
}

VoTransferRate VoTransferRateMonitor::value() const
{
    if (!m_private || m_private->ring.size() < 2)
        return {};
    const Sample& oldest = m_private->ring.oldest();
    const Sample& newest = m_private->ring.newest();
    // The rates of the intervals weighted by their length add up to this, which has no quotient per interval: two
    // samples of one instant do no harm.
    const VoDownloadSize gained = newest.received - oldest.received;
    if (gained.bytes() <= 0 || newest.time <= oldest.time)
        return {};
    return VoTransferRate(static_cast<double>(gained.bytes()) / Seconds(oldest.time, newest.time));
}

VoString VoTransferRateMonitor::toString() const
{
    return value().toString();
}

VoTransferRateMonitor::Private& VoTransferRateMonitor::samples()
{
    if (!m_private)
        m_private = std::make_unique<Private>();
    return *m_private;
}

VoString operator+(const char* text, const VoTransferRateMonitor& monitor)
{
    return text + monitor.toString();
}

std::ostream& operator<<(std::ostream& stream, const VoTransferRateMonitor& monitor)
{
    return stream << monitor.toString();
}
