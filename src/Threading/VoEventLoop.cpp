#include <Threading/VoEventLoop.h>

#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>
#include <Threading/ThreadFactory.h>
#include <Threading/VoThreadException.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

class VoEventLoop::Private
{
public:
    explicit Private(VoEventLoop& loop)
        : m_loop(loop)
    {
    }

    void run();
    VoWeakPtr<VoEvent> add(VoSharedPtr<VoEvent> event);
    void stop(bool discard);

private:
    using Queue = std::deque<VoSharedPtr<VoEvent>>;

    void enqueue(VoSharedPtr<VoEvent> event);
    VoSharedPtr<VoEvent> take();
    Queue takeAll();
    void loop();
    void requestEnd(bool discard);
    void join();

    VoEventLoop& m_loop;

    std::mutex m_control; // serialises run, finish and terminate, which hold it while joining
    VoThread m_thread;

    std::atomic<bool> m_running{false};          // from run() until the thread has taken an ABORT event
    std::atomic<std::thread::id> m_loopThread{}; // while the loop's thread is in loop()

    std::mutex m_queueMutex;
    std::condition_variable m_wake;
    Queue m_queue;
    // By type, the newest queued event that absorbs others.
    std::unordered_map<std::int32_t, VoSharedPtr<VoEvent>> m_absorbers;
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

void VoEventLoop::Private::run()
{
    if (m_loopThread.load() == std::this_thread::get_id())
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
        m_thread = vo::detail::CreateThread([this] { loop(); }, "vo event loop");
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
    }
    m_loopThread = std::thread::id();
    m_running = false;
}

VoSharedPtr<VoEvent> VoEventLoop::Private::take()
{
    std::unique_lock<std::mutex> lock(m_queueMutex);
    m_wake.wait(lock, [this] { return !m_queue.empty(); });
    VoSharedPtr<VoEvent> event = std::move(m_queue.front());
    m_queue.pop_front();
    if (!m_absorbers.empty()) {
        const auto absorber = m_absorbers.find(event->type());
        if (absorber != m_absorbers.end() && absorber->second == event)
            m_absorbers.erase(absorber);
    }
    return event;
}

VoEventLoop::Private::Queue VoEventLoop::Private::takeAll()
{
    const std::lock_guard<std::mutex> lock(m_queueMutex);
    m_absorbers.clear();
    return std::exchange(m_queue, Queue());
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
        const std::lock_guard<std::mutex> lock(m_queueMutex);
        VoSharedPtr<VoEvent>& absorber = m_absorbers[event->type()];
        if (absorber) {
            absorber->merge(*event);
            return absorber;
        }
        first = m_queue.empty();
        m_queue.push_back(event);
        absorber = std::move(event);
    }
    if (first)
        m_wake.notify_one();
    return result;
}

void VoEventLoop::Private::enqueue(VoSharedPtr<VoEvent> event)
{
    bool first = false;
    {
        const std::lock_guard<std::mutex> lock(m_queueMutex);
        first = m_queue.empty(); // a loop that has something to do is not asleep
        m_queue.push_back(std::move(event));
    }
    if (first)
        m_wake.notify_one();
}

void VoEventLoop::Private::join()
{
    m_thread.join();
    // The ABORT that ended the loop may have been another one: ours must not end the next run at once.
    const std::lock_guard<std::mutex> lock(m_queueMutex);
    m_queue.erase(std::remove_if(m_queue.begin(), m_queue.end(),
                                 [](const VoSharedPtr<VoEvent>& event) { return event->type() == VoEvent::ABORT; }),
                  m_queue.end());
}

void VoEventLoop::Private::stop(bool discard)
{
    if (m_loopThread.load() == std::this_thread::get_id()) {
        requestEnd(discard);
        return;
    }
    const std::lock_guard<std::mutex> control(m_control);
    if (!m_thread.joinable())
        return;
    requestEnd(discard);
    join();
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
    m_private->stop(true);
}

void VoEventLoop::run()
{
    m_private->run();
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
