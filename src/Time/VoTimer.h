#pragma once

#include <Time/VoTimeDuration.h>

#include <chrono>

/// A stopwatch by a clock that is never set: unlike a difference of time points it cannot run backwards.
class VoTimer
{
public:
    /// Started now.
    VoTimer() = default;

    /// The time since the timer was made or restarted.
    VoTimeDuration elapsed() const
    {
        return VoTimeDuration(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - m_start));
    }

    /// Starts anew; returns what elapsed() was.
    VoTimeDuration restart()
    {
        const Clock::time_point now = Clock::now();
        const auto span = std::chrono::duration_cast<std::chrono::nanoseconds>(now - m_start);
        m_start = now;
        return VoTimeDuration(span);
    }

    /// Whether at least so much time has passed.
    bool hasExpired(VoTimeDuration span) const { return elapsed() >= span; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point m_start = Clock::now();
};
