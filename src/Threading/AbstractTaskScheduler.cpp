#include <Threading/AbstractTaskScheduler.h>

#include <Core/VoException.h>
#include <Threading/VoThread.h>
#include <Threading/detail/TaskJob.h>
#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace vo::background_task {

/// Work arrives in one queue and is taken from another; a thread that finds the second one empty exchanges them. So who
/// adds work hardly ever meets who takes it.
///
/// What holds whenever no lock is held: all of `m_queue` is older than all of `m_arrivals`; a job is in one of the two
/// or in `m_current`, or is nobody's any more; and each arrival wakes one more of the idle threads while there is one,
/// so that no work lies while a thread waits. Threads share this object: a scheduler that one of its tasks destroys
/// leaves them behind.
class AbstractTaskScheduler::Private : public std::enable_shared_from_this<AbstractTaskScheduler::Private>
{
public:
    using JobPtr = std::shared_ptr<detail::Job>;

    explicit Private(std::size_t workers)
        : m_limit(workers)
    {
    }

    void enqueue(JobPtr job);
    void end(bool discard);
    void abandon();
    bool isOwnThread() const { return detail::SchedulerOfThread() == this; }
    std::size_t limit() const { return m_limit; }

private:
    void work();
    void startWorker(); // under `m_arrivalMutex`
    void beginToEnd(bool discard);
    std::vector<VoThread> takeThreads();
    bool findWork(std::unique_lock<std::mutex>& lock);
    void waitForArrival(std::unique_lock<std::mutex>& arrival);

    const std::size_t m_limit;

    std::mutex m_control; // serialises end(); taken before all others

    std::mutex m_mutex;                   // for the next two; taken before the other one
    std::deque<JobPtr> m_queue;           // older than all arrivals
    std::vector<const JobPtr*> m_current; // what each thread runs; null while it looks for work

    std::mutex m_arrivalMutex; // for all below
    std::condition_variable m_wake;
    std::deque<JobPtr> m_arrivals;
    std::vector<VoThread> m_threads;
    std::size_t m_idle = 0;  // threads that wait
    std::size_t m_woken = 0; // at most as many as of these are about to go on
    bool m_ending = false;
};

void AbstractTaskScheduler::Private::startWorker()
{
    m_threads.reserve(m_threads.size() + 1);
    m_threads.push_back(vo::detail::CreateThread([self = shared_from_this()] { self->work(); }, "vo worker"));
}

void AbstractTaskScheduler::Private::enqueue(JobPtr job)
{
    bool wakesOne = false;
    {
        const std::lock_guard<std::mutex> lock(m_arrivalMutex);
        if (m_idle < m_arrivals.size() + 1 && m_threads.size() < m_limit && !m_ending) {
            try {
                startWorker();
            } catch (const VoException&) {
                if (m_threads.empty())
                    throw; // with some threads the work is only done later
            }
        }
        m_arrivals.push_back(std::move(job));
        // A call of the system for each of many small jobs would cost more than they do.
        wakesOne = m_woken < m_idle;
        m_woken += wakesOne ? 1 : 0;
    }
    if (wakesOne)
        m_wake.notify_one();
}

// Also returns without one.
void AbstractTaskScheduler::Private::waitForArrival(std::unique_lock<std::mutex>& arrival)
{
    ++m_idle;
    m_wake.wait(arrival);
    --m_idle;
    // Whoever comes counts as the one that was woken: it is never believed that more are coming than are.
    m_woken -= std::min<std::size_t>(m_woken, 1);
}

// With the lock of `m_mutex`. False when the thread shall end.
bool AbstractTaskScheduler::Private::findWork(std::unique_lock<std::mutex>& lock)
{
    while (m_queue.empty()) {
        std::unique_lock<std::mutex> arrival(m_arrivalMutex);
        m_queue.swap(m_arrivals);
        if (!m_queue.empty())
            return true;
        if (m_ending)
            return false;
        // The lock of the arrivals is held from looking to waiting: whatever comes after the look wakes a thread.
        lock.unlock();
        waitForArrival(arrival);
        arrival.unlock();
        lock.lock();
    }
    return true;
}

void AbstractTaskScheduler::Private::work()
{
    detail::SetSchedulerOfThread(this);
    JobPtr job;  // written under the lock: end() looks at it
    JobPtr done; // what it holds is released without the lock
    std::unique_lock<std::mutex> lock(m_mutex);
    m_current.push_back(&job);
    for (;;) {
        if (done && m_queue.empty()) {
            lock.unlock();
            done.reset();
            lock.lock();
        }
        if (!findWork(lock))
            break;
        job = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        done.reset();
        if (job->claim())
            job->run();
        lock.lock();
        done.swap(job);
    }
    m_current.erase(std::find(m_current.begin(), m_current.end(), &job));
}

// Lets the threads end once there is no more work, and stops and discards what there is if that is wanted.
void AbstractTaskScheduler::Private::beginToEnd(bool discard)
{
    std::deque<JobPtr> discarded;
    std::vector<JobPtr> stopped;
    {
        const std::scoped_lock lock(m_mutex, m_arrivalMutex);
        if (discard) {
            discarded.swap(m_queue);
            discarded.insert(discarded.end(), m_arrivals.begin(), m_arrivals.end());
            m_arrivals.clear();
            for (const JobPtr* job : m_current)
                if (*job)
                    stopped.push_back(*job);
        }
        m_ending = true;
    }
    m_wake.notify_all();
    for (const JobPtr& job : stopped)
        job->stop();
    for (const JobPtr& job : discarded)
        if (job->claim())
            job->cancel();
}

std::vector<VoThread> AbstractTaskScheduler::Private::takeThreads()
{
    const std::lock_guard<std::mutex> lock(m_arrivalMutex);
    return std::exchange(m_threads, std::vector<VoThread>());
}

// The scheduler ends while one of its threads runs the task that ends it: they go on without it.
void AbstractTaskScheduler::Private::abandon()
{
    beginToEnd(true);
    for (VoThread& thread : takeThreads())
        thread.detach();
}

void AbstractTaskScheduler::Private::end(bool discard)
{
    if (isOwnThread())
        throw VoInvalidCallException("Scheduler cannot wait for itself");
    const std::lock_guard<std::mutex> controlLock(m_control);
    beginToEnd(discard);
    for (VoThread& thread : takeThreads())
        thread.join();
    const std::lock_guard<std::mutex> lock(m_arrivalMutex);
    m_ending = false;
    // Work that was added while the last threads were leaving.
    if (!m_arrivals.empty())
        startWorker();
}

AbstractTaskScheduler::AbstractTaskScheduler(std::size_t workers)
    : m_private(std::make_shared<Private>(std::max<std::size_t>(1, workers)))
{
}

AbstractTaskScheduler::~AbstractTaskScheduler()
{
    if (m_private->isOwnThread())
        m_private->abandon();
    else
        m_private->end(true);
}

TaskHandle AbstractTaskScheduler::add(VoSharedPtr<AbstractTask> task)
{
    if (!task)
        throw VoNullPointerException("Null task");
    auto job = std::make_shared<detail::TaskJob>(std::move(task), m_private.get());
    enqueue(job);
    return TaskHandle(std::move(job));
}

void AbstractTaskScheduler::finish()
{
    m_private->end(false);
}

void AbstractTaskScheduler::terminate()
{
    m_private->end(true);
}

std::size_t AbstractTaskScheduler::workers() const noexcept
{
    return m_private->limit();
}

void AbstractTaskScheduler::enqueue(std::shared_ptr<detail::Job> job)
{
    m_private->enqueue(std::move(job));
}

bool AbstractTaskScheduler::isWorker() const noexcept
{
    return m_private->isOwnThread();
}

} // namespace vo::background_task
