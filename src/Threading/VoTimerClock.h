#pragma once

#include <Core/VoExport.h>
#include <Time/VoTimeDuration.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

/// What timers run by: a time that only goes forward, and the calls that are due at its instants.
///
/// Instants are durations since some beginning that is the clock's own. Safe to use from several threads.
class VOCORE_EXPORT VoTimerClock
{
public:
    /// The system's clock that is never set; time that the machine sleeps may be left out. Its calls come on one
    /// thread, which all timers share and which ends with the last of them.
    static std::shared_ptr<VoTimerClock> System();

    virtual ~VoTimerClock();
    VoTimerClock(const VoTimerClock&) = delete;
    VoTimerClock& operator=(const VoTimerClock&) = delete;

    virtual VoTimeDuration now() const = 0; ///< The present instant.

protected:
    VoTimerClock(); ///< Nothing is due.
    /// Makes the calls that are due at an instant or were before, in the order of their instants.
    void runDue(VoTimeDuration instant);
    VoTimeDuration nextDue() const; ///< The instant of the next call; Max() when there is none.

private:
    friend class VoIntervalTimer;
    class SystemClock;
    class Private;

    /// Has `call` made at an instant; Max() is never. It must not throw. The result is for drop(), and never 0.
    std::uint64_t callAt(VoTimeDuration instant, std::function<void()> call);
    /// Forgets a call that was not made yet.
    void drop(VoTimeDuration instant, std::uint64_t id);
    /// Before a call is added.
    virtual void prepare();

    const std::shared_ptr<Private> m_private; // a thread that makes calls shares it
};

/// A clock that stands still until it is told to go on, so that what timers do can be tested without waiting.
class VOCORE_EXPORT VoManualClock : public VoTimerClock
{
public:
    VoManualClock(); ///< Shows no time.
    ~VoManualClock() override;

    VoTimeDuration now() const override; ///< The sum of what it was advanced by.

    /// Goes on by a duration. What becomes due on the way is called on this thread, at its instant.
    void advance(VoTimeDuration duration);

    /// Goes on at once, as after a sleep of the machine: what became due on the way is called at the end.
    void jump(VoTimeDuration duration);

private:
    std::atomic<std::int64_t> m_now{0}; // in nanoseconds
};
