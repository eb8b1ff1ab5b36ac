#include <Threading/VoIntervalTimer.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoEventLoop.h>
#include <Threading/detail/QueuedFunctions.h>

#include <QtCore/QThread>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace {

class FunctionEvent final : public VoEvent
{
public:
    explicit FunctionEvent(std::function<void()> function)
        : VoEvent(0)
        , m_function(std::move(function))
    {
    }

private:
    void run() override { m_function(); }

    std::function<void()> m_function;
};

} // namespace

// Where calls are made.
class VoIntervalTimer::Target
{
public:
    virtual ~Target() = default;
    virtual void post(std::function<void()> function) = 0;
};

class VoIntervalTimer::Loop final : public Target
{
public:
    explicit Loop(VoEventLoop& loop)
        : m_loop(loop)
    {
    }
    void post(std::function<void()> function) override
    {
        m_loop.add(VoSharedPtr<VoEvent>(new FunctionEvent(std::move(function))));
    }

private:
    VoEventLoop& m_loop;
};

class VoIntervalTimer::FrameworkLoop final : public Target
{
public:
    ~FrameworkLoop() override
    {
        if (m_place->thread() != QThread::currentThread())
            m_place.release()->deleteLater();
    }
    void post(std::function<void()> function) override { m_place->post(std::move(function)); }

private:
    std::unique_ptr<vo::detail::QueuedFunctions> m_place = std::make_unique<vo::detail::QueuedFunctions>();
};

class VoIntervalTimer::Private : public std::enable_shared_from_this<Private>
{
public:
    Private(std::unique_ptr<Target> target, Callback callback, std::shared_ptr<VoTimerClock> clock)
        : m_callback(std::move(callback))
        , m_clock(std::move(clock))
        , m_target(std::move(target))
    {
    }

    void start(VoTimeDuration delay, VoTimeDuration period)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        endRun();
        m_start = m_clock->now();
        m_period = period;
        m_calls = 0;
        m_told = 0;
        // Beyond the clock's reach is never.
        callAt(delay > VoTimeDuration::Max() - m_start ? VoTimeDuration::Max() : m_start + delay);
    }

    // What is being called on this thread is the caller itself.
    void cancel()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        endRun();
        m_returned.wait(lock, [this] { return m_depth == 0 || m_caller == std::this_thread::get_id(); });
    }

    // For good: the target may be of the thread that ends the timer.
    void end()
    {
        cancel();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_target.reset();
    }

    bool isActive() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_dueId != 0 || m_isPosted;
    }

private:
    void endRun()
    {
        ++m_run;
        m_isPosted = false;
        if (m_dueId != 0)
            m_clock->drop(m_due, std::exchange(m_dueId, 0));
    }

    // The clock does not keep timers alive.
    void callAt(VoTimeDuration instant)
    {
        m_due = instant;
        m_dueId = m_clock->callAt(instant, [weak = weak_from_this(), run = m_run] {
            if (const auto self = weak.lock())
                self->fallDue(run);
        });
    }

    // A call that was not made yet stands for this one too.
    void fallDue(std::uint64_t run)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (run != m_run)
            return;
        m_dueId = 0;
        if (m_period > VoTimeDuration()) {
            m_calls = static_cast<std::uint64_t>((m_clock->now() - m_start).count() / m_period.count());
            callAt(m_start + m_period * (m_calls + 1));
        } else {
            m_calls = 1;
        }
        if (std::exchange(m_isPosted, true))
            return;
        // Queued with the lock held, so that the target does not end meanwhile.
        if (m_target)
            return m_target->post([self = shared_from_this(), run] { self->call(run); });
        lock.unlock();
        call(run);
    }

    void call(std::uint64_t run)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (run != m_run)
            return;
        m_isPosted = false;
        const Tick tick{m_calls, m_calls - m_told - 1};
        m_told = m_calls;
        m_caller = std::this_thread::get_id();
        ++m_depth;
        lock.unlock();
        try {
            m_callback(tick);
        } catch (...) {
            vo::logging::Logger::Get("timers").error("Exception in timer callback: " + vo::CurrentExceptionText());
        }
        lock.lock();
        if (--m_depth == 0)
            m_returned.notify_all();
    }

    const Callback m_callback;
    const std::shared_ptr<VoTimerClock> m_clock;

    mutable std::mutex m_mutex;       // guards the rest
    std::unique_ptr<Target> m_target; // none: the thread of the clock
    std::condition_variable m_returned;
    std::thread::id m_caller;
    int m_depth = 0;           // of calls that run: a callback may run a loop that calls again
    std::uint64_t m_run = 0;   // changes with each start and cancel; what belongs to another one is void
    bool m_isPosted = false;   // a call is on its way to the target
    VoTimeDuration m_due;      // of the call that the clock will make
    std::uint64_t m_dueId = 0; // its identifier there; 0 when there is none
    VoTimeDuration m_start;
    VoTimeDuration m_period;   // none for a single call
    std::uint64_t m_calls = 0; // that were due since the start
    std::uint64_t m_told = 0;  // of these, up to the last call made
};

VoIntervalTimer::VoIntervalTimer(std::unique_ptr<Target> target, Callback callback, std::shared_ptr<VoTimerClock> clock)
{
    if (!callback)
        throw VoInvalidParameterException("Invalid callback");
    m_private = std::make_shared<Private>(std::move(target), std::move(callback), std::move(clock));
}

VoIntervalTimer::VoIntervalTimer(Callback callback, std::shared_ptr<VoTimerClock> clock)
    : VoIntervalTimer(nullptr, std::move(callback), std::move(clock))
{
}

VoIntervalTimer::VoIntervalTimer(VoEventLoop& loop, Callback callback, std::shared_ptr<VoTimerClock> clock)
    : VoIntervalTimer(std::make_unique<Loop>(loop), std::move(callback), std::move(clock))
{
}

VoIntervalTimer VoIntervalTimer::OnFrameworkLoop(Callback callback, std::shared_ptr<VoTimerClock> clock)
{
    return VoIntervalTimer(std::make_unique<FrameworkLoop>(), std::move(callback), std::move(clock));
}

VoIntervalTimer::VoIntervalTimer(VoIntervalTimer&& other) noexcept = default;

VoIntervalTimer& VoIntervalTimer::operator=(VoIntervalTimer&& other) noexcept
{
    if (this != &other) {
        if (m_private)
            m_private->end();
        m_private = std::move(other.m_private);
    }
    return *this;
}

VoIntervalTimer::~VoIntervalTimer()
{
    if (m_private)
        m_private->end();
}

void VoIntervalTimer::startOnce(VoTimeDuration delay)
{
    m_private->start(std::max(delay, VoTimeDuration()), VoTimeDuration());
}

void VoIntervalTimer::start(VoTimeDuration period)
{
    if (period <= VoTimeDuration())
        throw VoInvalidParameterException("Invalid timer period");
    m_private->start(period, period);
}

void VoIntervalTimer::cancel()
{
    m_private->cancel();
}

bool VoIntervalTimer::isActive() const
{
    return m_private->isActive();
}
