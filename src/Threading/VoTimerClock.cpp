#include <Threading/VoTimerClock.h>

#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace {

using SteadyClock = std::chrono::steady_clock;

VoTimeDuration SteadyNow()
{
    const auto sinceStart = SteadyClock::now().time_since_epoch();
    return VoTimeDuration(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart));
}

} // namespace

// The calls by their instants.
class VoTimerClock::Private
{
public:
    std::uint64_t add(VoTimeDuration instant, std::function<void()> call)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_calls.emplace(std::pair(instant, ++m_lastId), std::move(call));
        m_changed.notify_one();
        return m_lastId;
    }

    void drop(VoTimeDuration instant, std::uint64_t id)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_calls.erase({instant, id});
    }

    VoTimeDuration next() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return nextLocked();
    }

    // No lock is held during the calls, which may add others.
    void runDue(VoTimeDuration instant)
    {
        for (;;) {
            std::unique_lock<std::mutex> lock(m_mutex);
            if (nextLocked() == VoTimeDuration::Max() || m_calls.begin()->first.first > instant)
                return;
            const auto next = m_calls.extract(m_calls.begin());
            lock.unlock();
            next.mapped()();
        }
    }

    // A thread's work until end().
    void serve()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_isOver) {
            const VoTimeDuration next = nextLocked();
            if (next == VoTimeDuration::Max()) {
                m_changed.wait(lock);
            } else if (next > SteadyNow()) {
                m_changed.wait_until(lock, SteadyClock::time_point(next.toChrono()));
            } else {
                lock.unlock();
                runDue(SteadyNow());
                lock.lock();
            }
        }
    }

    void end()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
        m_changed.notify_one();
    }

private:
    VoTimeDuration nextLocked() const { return m_calls.empty() ? VoTimeDuration::Max() : m_calls.begin()->first.first; }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::pair<VoTimeDuration, std::uint64_t>, std::function<void()>> m_calls; // by instant and identifier
    std::uint64_t m_lastId = 0;
    bool m_isOver = false;
};

// Begins its thread with the first call.
class VoTimerClock::SystemClock final : public VoTimerClock
{
public:
    ~SystemClock() override
    {
        m_private->end();
        vo::detail::FinishThread(m_thread); // the callback that ends the last timer may be on the thread
    }

    VoTimeDuration now() const override { return SteadyNow(); }

private:
    void prepare() override
    {
        std::call_once(m_started, [this] {
            m_thread = vo::detail::CreateThread([calls = m_private] { calls->serve(); }, "timers");
        });
    }

    std::once_flag m_started;
    VoThread m_thread;
};

VoTimerClock::VoTimerClock()
    : m_private(std::make_shared<Private>())
{
}

VoTimerClock::~VoTimerClock() = default;

std::shared_ptr<VoTimerClock> VoTimerClock::System()
{
    // Never destroyed: timers may be made and ended while static objects are.
    struct Shared
    {
        std::mutex mutex;
        std::weak_ptr<VoTimerClock> clock;
    };
    static Shared* const shared = new Shared;
    const std::lock_guard<std::mutex> lock(shared->mutex);
    std::shared_ptr<VoTimerClock> clock = shared->clock.lock();
    if (!clock) {
        clock = std::make_shared<SystemClock>();
        shared->clock = clock;
    }
    return clock;
}

void VoTimerClock::runDue(VoTimeDuration instant)
{
    m_private->runDue(instant);
}

VoTimeDuration VoTimerClock::nextDue() const
{
    return m_private->next();
}

std::uint64_t VoTimerClock::callAt(VoTimeDuration instant, std::function<void()> call)
{
    prepare();
    return m_private->add(instant, std::move(call));
}

void VoTimerClock::drop(VoTimeDuration instant, std::uint64_t id)
{
    m_private->drop(instant, id);
}

void VoTimerClock::prepare() {}

VoManualClock::VoManualClock() = default;
VoManualClock::~VoManualClock() = default;

VoTimeDuration VoManualClock::now() const
{
    return VoNanoseconds(m_now);
}

void VoManualClock::advance(VoTimeDuration duration)
{
    const VoTimeDuration end = now() + duration;
    while (nextDue() <= end && nextDue() != VoTimeDuration::Max()) {
        // What is overdue is called at once, not in the past.
        if (nextDue() > now())
            m_now = nextDue().count();
        runDue(now());
    }
    m_now = std::max(now(), end).count(); // a call may have gone on farther
}

void VoManualClock::jump(VoTimeDuration duration)
{
    m_now = (now() + duration).count();
    runDue(now());
}
