#include <Threading/VoEventLoop.h>

#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoThreadException.h>
#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <iterator>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

/// Events arrive in one queue and are taken from another; the thread that finds the second one empty exchanges them. So
/// who adds events hardly ever meets who takes them.
class VoEventLoop::Private
{
public:
    explicit Private(VoEventLoop& loop)
        : m_loop(loop)
    {
    }
    // A loop that one of its own events destroyed ends here, when its thread or who started it lets go of it.
    ~Private();

    void run(const std::shared_ptr<Private>& self);
    void abandon();
    VoWeakPtr<VoEvent> add(VoSharedPtr<VoEvent> event);
    void stop(bool discard);
    bool isOwnThread() const { return m_loopThread.load() == std::this_thread::get_id(); }

private:
    using Queue = std::deque<VoSharedPtr<VoEvent>>;

    void enqueue(VoSharedPtr<VoEvent> event);
    VoSharedPtr<VoEvent> take();
    void exchangeQueues();
    Queue withdraw();
    Queue takeAll();
    void loop();
    void requestEnd(bool discard);
    void join();

    VoEventLoop& m_loop;      // gone once the loop is abandoned
    bool m_abandoned = false; // written and read by the loop's thread alone

    std::mutex m_control; // serialises run, finish and terminate, which hold it while joining
    VoThread m_thread;

    std::atomic<bool> m_running{false};          // from run() until the thread has taken an ABORT event
    std::atomic<std::thread::id> m_loopThread{}; // while the loop's thread is in loop()

    // Older than all arrivals. Exchanged by the loop's thread and withdrawn by others under the lock, which is taken
    // before the other one; between these the thread takes event after event by their number alone.
    std::mutex m_queueMutex;
    Queue m_queue;
    std::atomic<std::size_t> m_next{0}; // beyond the end once they are used up or withdrawn

    std::mutex m_arrivalMutex; // for all below
    std::condition_variable m_wake;
    Queue m_arrivals;
    // By type, the newest event of both queues that absorbs others.
    std::unordered_map<std::int32_t, VoSharedPtr<VoEvent>> m_absorbers;
    std::atomic<bool> m_absorbs{false}; // whether there are any; read without the lock
};

namespace {

// All loops alive, for ShutDown(). Never destroyed: loops may live in static objects.
struct Registry
{
    std::mutex mutex;
    std::vector<std::weak_ptr<void>> loops;
    bool shutDown = false;
};

Registry& Loops()
{
    static auto* registry = new Registry;
    return *registry;
}

} // namespace

VoEventLoop::Private::~Private()
{
    vo::detail::FinishThread(m_thread);
}

void VoEventLoop::Private::run(const std::shared_ptr<Private>& self)
{
    if (isOwnThread())
        throw VoInvalidCallException("Thread already running");
    const std::lock_guard<std::mutex> control(m_control);
    {
        const std::lock_guard<std::mutex> lock(Loops().mutex);
        if (Loops().shutDown)
            throw VoInvalidCallException("Event loops have been shut down");
    }
    if (m_thread.joinable()) {
        // A thread that an ABORT event has ended by itself may be followed by a new one.
        if (m_running)
            throw VoInvalidCallException("Thread already running");
        join();
    }
    m_running = true;
    try {
        m_thread = vo::detail::CreateThread([self] { self->loop(); }, "vo event loop");
    } catch (...) {
        m_running = false;
        throw;
    }
}

void VoEventLoop::Private::loop()
{
    m_loopThread = std::this_thread::get_id();
    for (;;) {
        VoSharedPtr<VoEvent> event = take();
        if (event->type() == VoEvent::ABORT)
            break;
        try {
            m_loop.process(std::move(event));
        } catch (...) {
            vo::logging::Logger::Get("eventloop").error("Event failed (" + vo::CurrentExceptionText() + ")");
        }
        if (m_abandoned)
            break;
    }
    m_loopThread = std::thread::id();
    m_running = false;
}

// Yields once before it waits, so that who adds many events gets to add more: falling asleep and being woken costs as
// much as a hundred of them.
void VoEventLoop::Private::exchangeQueues()
{
    for (bool hasYielded = false;; hasYielded = true) {
        std::unique_lock<std::mutex> lock(m_queueMutex);
        m_queue.clear(); // all have been taken
        std::unique_lock<std::mutex> arrivalLock(m_arrivalMutex);
        m_queue.swap(m_arrivals);
        if (!m_queue.empty()) {
            m_next.store(0, std::memory_order_relaxed);
            return;
        }
        lock.unlock();
        if (hasYielded) {
            m_wake.wait(arrivalLock);
        } else {
            arrivalLock.unlock();
            std::this_thread::yield();
        }
    }
}

VoSharedPtr<VoEvent> VoEventLoop::Private::take()
{
    std::size_t next = m_next.fetch_add(1, std::memory_order_relaxed);
    while (next >= m_queue.size()) {
        exchangeQueues();
        next = m_next.fetch_add(1, std::memory_order_relaxed);
    }
    VoSharedPtr<VoEvent> event = std::move(m_queue[next]);
    if (!m_absorbs)
        return event;
    const std::lock_guard<std::mutex> arrivalLock(m_arrivalMutex);
    const auto absorber = m_absorbers.find(event->type());
    if (absorber != m_absorbers.end() && absorber->second == event)
        m_absorbers.erase(absorber);
    m_absorbs = !m_absorbers.empty();
    return event;
}

// What the loop's thread has not taken, under both locks. The queue keeps its length: the thread looks at that.
VoEventLoop::Private::Queue VoEventLoop::Private::withdraw()
{
    Queue rest;
    for (std::size_t i = m_next.exchange(m_queue.size(), std::memory_order_relaxed); i < m_queue.size(); ++i)
        rest.push_back(std::move(m_queue[i]));
    std::move(m_arrivals.begin(), m_arrivals.end(), std::back_inserter(rest));
    m_arrivals.clear();
    return rest;
}

VoEventLoop::Private::Queue VoEventLoop::Private::takeAll()
{
    const std::scoped_lock lock(m_queueMutex, m_arrivalMutex);
    m_absorbers.clear();
    m_absorbs = false;
    return withdraw();
}

VoWeakPtr<VoEvent> VoEventLoop::Private::add(VoSharedPtr<VoEvent> event)
{
    if (!event)
        throw VoNullPointerException("Null event");
    VoWeakPtr<VoEvent> result = event;
    if (event->type() == VoEvent::ABORT || !event->mergeable()) {
        enqueue(std::move(event));
        return result;
    }

    bool first = false;
    {
        const std::lock_guard<std::mutex> lock(m_arrivalMutex);
        VoSharedPtr<VoEvent>& absorber = m_absorbers[event->type()];
        if (absorber) {
            absorber->merge(*event);
            return absorber;
        }
        first = m_arrivals.empty();
        m_arrivals.push_back(event);
        absorber = std::move(event);
        m_absorbs = true;
    }
    if (first)
        m_wake.notify_one();
    return result;
}

void VoEventLoop::Private::enqueue(VoSharedPtr<VoEvent> event)
{
    bool first = false;
    {
        const std::lock_guard<std::mutex> lock(m_arrivalMutex);
        first = m_arrivals.empty(); // else the loop has been woken for those before it
        m_arrivals.push_back(std::move(event));
    }
    if (first)
        m_wake.notify_one();
}

void VoEventLoop::Private::join()
{
    m_thread.join();
    // The ABORT that ended the loop may have been another one: ours must not end the next run at once.
    const std::scoped_lock lock(m_queueMutex, m_arrivalMutex);
    m_arrivals = withdraw();
    m_arrivals.erase(std::remove_if(m_arrivals.begin(), m_arrivals.end(),
                                    [](const VoSharedPtr<VoEvent>& event) { return event->type() == VoEvent::ABORT; }),
                     m_arrivals.end());
}

void VoEventLoop::Private::stop(bool discard)
{
    if (isOwnThread()) {
        requestEnd(discard);
        return;
    }
    const std::lock_guard<std::mutex> control(m_control);
    if (!m_thread.joinable())
        return;
    requestEnd(discard);
    join();
}

// The loop's object ends while its thread runs the event that ends it: the thread goes on without it.
void VoEventLoop::Private::abandon()
{
    m_abandoned = true;
    takeAll();
}

void VoEventLoop::Private::requestEnd(bool discard)
{
    if (discard)
        takeAll(); // destroyed here, outside the queue's lock: their destructors may add others
    enqueue(VoSharedPtr<VoEvent>(VoUniquePtr<VoEvent>::Make(VoEvent::ABORT)));
}

VoEventLoop::VoEventLoop()
    : m_private(std::make_shared<Private>(*this))
{
    Registry& registry = Loops();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    registry.loops.erase(std::remove_if(registry.loops.begin(), registry.loops.end(),
                                        [](const std::weak_ptr<void>& loop) { return loop.expired(); }),
                         registry.loops.end());
    registry.loops.push_back(m_private);
}

VoEventLoop::~VoEventLoop()
{
    if (m_private->isOwnThread())
        m_private->abandon();
    else
        m_private->stop(true);
}

void VoEventLoop::run()
{
    const std::shared_ptr<Private> self = m_private; // an event may destroy this object before the start is complete
    self->run(self);
}

VoWeakPtr<VoEvent> VoEventLoop::add(VoSharedPtr<VoEvent> event)
{
    return m_private->add(std::move(event));
}

void VoEventLoop::finish()
{
    m_private->stop(false);
}

void VoEventLoop::terminate()
{
    m_private->stop(true);
}

void VoEventLoop::ShutDown()
{
    // Joined outside the registry's lock: the events that are still running may make and destroy loops.
    std::vector<std::weak_ptr<void>> loops;
    {
        const std::lock_guard<std::mutex> lock(Loops().mutex);
        Loops().shutDown = true;
        loops.swap(Loops().loops);
    }
    for (const std::weak_ptr<void>& weak : loops)
        if (const std::shared_ptr<void> loop = weak.lock())
            static_cast<Private*>(loop.get())->stop(true);
}

void VoEventLoop::process(VoSharedPtr<VoEvent> event)
{
    event->run();
}
