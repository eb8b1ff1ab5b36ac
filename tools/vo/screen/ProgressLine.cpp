#include <vo/screen/ProgressLine.h>

#include <vo/line/Values.h>

#include <Download/VoDownloadSize.h>
#include <Download/VoTransferRate.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vo::tool {
namespace {

constexpr std::int64_t NanosecondsPerSecond = 1000000000;
/// Samples closer together than this would fill the monitor with one instant.
constexpr std::int64_t SampleInterval = NanosecondsPerSecond / 10;
/// Before this a guess would jump about.
constexpr std::int64_t FirstGuess = NanosecondsPerSecond;

int PercentOf(std::uint64_t done, std::uint64_t total)
{
    if (done >= total)
        return 100;
    // The division may round nearly everything up to everything.
    return std::min(99, static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total)));
}

} // namespace

ProgressLine::ProgressLine(const VoString& label, Unit unit)
    : m_label(label)
    , m_unit(unit)
{
}

void ProgressLine::update(std::uint64_t done, std::uint64_t total, const VoTimePoint& now)
{
    const bool complete = total != 0 && done >= total;
    m_total = std::max(m_total, total);
    m_done = std::max(m_done, complete ? m_total : m_total == 0 ? done : std::min(done, m_total));
    if (m_total != 0)
        m_percent = std::max(m_percent, PercentOf(m_done, m_total));
    if (m_sampled && (now - m_lastSample).count() < SampleInterval)
        return;
    if (!m_sampled)
        m_firstSample = now;
    m_sampled = true;
    m_lastSample = now;
    m_monitor.update(VoDownloadSize(m_done), now);
}

VoTimeDuration ProgressLine::timeLeft() const
{
    const VoTimeDuration unknown(VoNanoseconds{-1});
    if (m_total == 0 || !m_sampled || (m_lastSample - m_firstSample).count() < FirstGuess)
        return unknown;
    const VoTransferRate rate = m_monitor.value();
    if (rate == nullptr)
        return unknown;
    return VoDownloadSize(m_total - m_done) / rate;
}

VoString ProgressLine::amounts() const
{
    if (m_unit == Unit::Bytes) {
        const VoString done = BytesText(m_done);
        return m_total == 0 ? done : done + " of " + BytesText(m_total);
    }
    // The done count keeps the width of the total, so that what stands behind does not move.
    const VoString total(m_total);
    VoString done(m_done);
    if (m_total == 0)
        return done + " files";
    if (done.size() < total.size())
        done = VoString(' ', total.size() - done.size()) + done;
    return done + " of " + total + " files";
}

VoString ProgressLine::rate() const
{
    const VoTransferRate rate = m_monitor.value();
    if (rate == nullptr)
        return VoString();
    if (m_unit == Unit::Bytes)
        return VoString(rate.toString().trimmed()).replaced("  ", " ");
    return VoString(std::llround(std::min(rate.bytesPerSecond(), 1e15))) + " files/s";
}

VoString ProgressLine::remaining() const
{
    const VoTimeDuration left = timeLeft();
    if (left.count() < 0 || m_done >= m_total)
        return VoString();
    return TimeText(std::ceil(left.seconds()), 0) + " left"; // never less than it takes
}

VoString ProgressLine::text(std::size_t width) const
{
    const VoString share = m_percent >= 0 ? VoString(m_percent) + " %" : VoString();
    const VoString left = remaining();
    const std::vector<VoString> lines[] = {
        {amounts(), share, rate(), left}, {amounts(), share, left}, {amounts(), share}, {share, left}, {share}};
    VoString line;
    for (const std::vector<VoString>& parts : lines) {
        line = m_label;
        for (const VoString& part : parts) {
            if (!part.isEmpty())
                line += "   " + part;
        }
        if (line.size() <= width)
            return line;
    }
    line.resize(width, ' ');
    return line;
}

} // namespace vo::tool
