#pragma once

#include <Core/VoString.h>
#include <Download/VoTransferRateMonitor.h>
#include <Time/VoTimeDuration.h>
#include <Time/VoTimePoint.h>

#include <cstdint>

namespace vo::tool {

/// The text of a line that tells how far a piece of work is:
///
///     Installing   1234 of 2235 files   55 %   812 files/s   2 s left
///
/// Pure: times are handed in, and nothing is printed. What it shows never goes backwards and never beyond 100 %,
/// whatever it is told; 100 % appears only when all is done.
class ProgressLine
{
public:
    /// How amounts are shown.
    enum class Unit
    {
        Files,
        Bytes
    };

    /// A line that begins at nothing done; `label` says what is going on.
    ProgressLine(const VoString& label, Unit unit);

    const VoString& label() const { return m_label; }

    /// Takes in how much is done. What would go backwards, or beyond `total`, is corrected, and so is a `total` that
    /// shrinks; a `total` of 0 means that it is not known.
    void update(std::uint64_t done, std::uint64_t total, const VoTimePoint& now);

    std::uint64_t done() const { return m_done; } ///< As shown.
    /// As shown, rounded down; -1 while the total is not known.
    int percent() const { return m_percent; }
    /// The rate over the last samples tells it; negative while it cannot be told yet.
    VoTimeDuration timeLeft() const;

    /// The line, at most `width` bytes. Where it is narrow the rate gives way first, then the amounts, then the time;
    /// how far the work is stays the longest.
    VoString text(std::size_t width) const;

private:
    VoString amounts() const;
    VoString rate() const;
    VoString remaining() const;

    VoString m_label;
    Unit m_unit;
    std::uint64_t m_done = 0;
    std::uint64_t m_total = 0;
    int m_percent = -1;
    VoTransferRateMonitor m_monitor;
    VoTimePoint m_firstSample;
    VoTimePoint m_lastSample;
    bool m_sampled = false;
};

} // namespace vo::tool
