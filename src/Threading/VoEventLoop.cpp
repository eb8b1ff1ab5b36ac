#include <Threading/VoEventLoop.h>

#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoThreadException.h>
#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
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
    std::array<Queue, 2> takeAll();
    void loop();
    void requestEnd(bool discard);
    void join();

    VoEventLoop& m_loop;      // gone once the loop is abandoned
    bool m_abandoned = false; // written and read by the loop's thread alone

    std::mutex m_control; // serialises run, finish and terminate, which hold it while joining
    VoThread m_thread;

    std::atomic<bool> m_running{false};          // from run() until the thread has taken an ABORT event
    std::atomic<std::thread::id> m_loopThread{}; // while the loop's thread is in loop()

    std::mutex m_queueMutex; // taken before the other one
    Queue m_queue;           // older than all arrivals

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

VoSharedPtr<VoEvent> VoEventLoop::Private::take()
{
    std::unique_lock<std::mutex> lock(m_queueMutex);
    while (m_queue.empty()) {
        std::unique_lock<std::mutex> arrivalLock(m_arrivalMutex);
        m_queue.swap(m_arrivals);
        if (!m_queue.empty())
            break;
        lock.unlock();
        m_wake.wait(arrivalLock);
        arrivalLock.unlock();
        lock.lock();
    }
    VoSharedPtr<VoEvent> event = std::move(m_queue.front());
    m_queue.pop_front();
    if (!m_absorbs)
        return event;
    const std::lock_guard<std::mutex> arrivalLock(m_arrivalMutex);
    const auto absorber = m_absorbers.find(event->type());
    if (absorber != m_absorbers.end() && absorber->second == event)
        m_absorbers.erase(absorber);
    m_absorbs = !m_absorbers.empty();
    return event;
}

std::array<VoEventLoop::Private::Queue, 2> VoEventLoop::Private::takeAll()
{
    const std::scoped_lock lock(m_queueMutex, m_arrivalMutex);
    m_absorbers.clear();
    m_absorbs = false;
    return {std::exchange(m_queue, Queue()), std::exchange(m_arrivals, Queue())};
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
    for (Queue* queue : {&m_queue, &m_arrivals})
        queue->erase(std::remove_if(queue->begin(), queue->end(),
                                    [](const VoSharedPtr<VoEvent>& event) { return event->type() == VoEvent::ABORT; }),
                     queue->end());
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
