#pragma once

#include <Core/VoExport.h>
#include <Threading/VoTimerClock.h>
#include <Time/VoTimeDuration.h>

#include <cstdint>
#include <functional>
#include <memory>

class VoEventLoop;

/// Calls back after a time, once or again and again: on the timers' own thread, on a VoEventLoop, or on the framework's
/// loop of the thread that makes the timer.
///
/// The n-th call of a repeating timer is due at its start and n periods, however late the calls before were. What was
/// missed, because the loop was busy or the machine slept, is made up for by one call that tells how many were.
///
/// Members may be called from any thread, also from the callback. After cancel(), start() or the destructor no call of
/// before begins any more; cancel() and the destructor wait for one that is running on another thread, so they must not
/// be called while holding what the callback waits for. What a callback throws is logged in the category "timers", and
/// the timer goes on.
///
///     VoIntervalTimer blink([](const VoIntervalTimer::Tick&) { toggle(); });
///     blink.start(VoMilliseconds(500));
class VOCORE_EXPORT VoIntervalTimer
{
public:
    /// What a call is told.
    struct Tick
    {
        std::uint64_t number; ///< Periods since the start; 1 for the first call, and for the only one.
        std::uint64_t missed; ///< Calls left out since the call before.
    };
    using Callback = std::function<void(const Tick& tick)>; ///< What is called.

    /// Calls back on the thread of the clock, which it must not keep for long: other timers wait for it meanwhile.
    /// @throws VoInvalidParameterException "Invalid callback" for an empty one, from all constructors
    explicit VoIntervalTimer(Callback callback, std::shared_ptr<VoTimerClock> clock = VoTimerClock::System());
    /// Calls back as an event of a loop, which must outlive the timer. While the loop is stopped, calls wait.
    VoIntervalTimer(VoEventLoop& loop, Callback callback, std::shared_ptr<VoTimerClock> clock = VoTimerClock::System());
    /// Calls back on the framework's event loop of this thread. The timer must end on this thread, or before it ends.
    static VoIntervalTimer OnFrameworkLoop(Callback callback,
                                           std::shared_ptr<VoTimerClock> clock = VoTimerClock::System());

    VoIntervalTimer(VoIntervalTimer&& other) noexcept;            ///< Leaves one that can only be assigned to.
    VoIntervalTimer& operator=(VoIntervalTimer&& other) noexcept; ///< Ends this one first, as the destructor.
    VoIntervalTimer(const VoIntervalTimer&) = delete;
    VoIntervalTimer& operator=(const VoIntervalTimer&) = delete;
    ~VoIntervalTimer(); ///< As cancel().

    /// Calls once after a delay, at once when that is not above zero; starts anew when it ran.
    void startOnce(VoTimeDuration delay);
    /// Calls after each period; starts anew when it ran.
    /// @throws VoInvalidParameterException "Invalid timer period" for one not above zero; the timer stays as it was
    void start(VoTimeDuration period);
    void cancel();         ///< Makes no more calls until it is started again.
    bool isActive() const; ///< Whether a call is to come.

private:
    class Private;
    class Target;
    class Loop;
    class FrameworkLoop;

    VoIntervalTimer(std::unique_ptr<Target> target, Callback callback, std::shared_ptr<VoTimerClock> clock);

    std::shared_ptr<Private> m_private; // calls on their way share it
};
