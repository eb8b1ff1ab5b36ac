#include <Threading/AbstractTaskScheduler.h>

#include <Core/VoException.h>
#include <Threading/VoThread.h>
#include <Threading/detail/TaskJob.h>
#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vo::background_task {

namespace {

using TaskPtr = std::shared_ptr<detail::TaskJob>;

/// A task in the queue. Others may run or cancel it before its turn.
struct TaskWork
{
    void run() noexcept
    {
        if (job->claim())
            job->run();
    }

    void cancel() noexcept
    {
        if (job->claim())
            job->cancel();
    }

    TaskPtr job;
};

/// A part of the queue: filled by those who add work, under the lock of the arrivals, then given to the threads and
/// never filled again. They take its pieces in order without a lock and run each where it lies.
class Batch
{
public:
    static constexpr std::size_t Capacity = 256;

    explicit Batch(std::uint64_t serial) // the number of batches up to it
        : m_serial(serial)
    {
        m_pieces.reserve(FirstPieces);
    }

    void add(detail::QueuedWork&& work)
    {
        if (m_pieces.size() == m_pieces.capacity())
            m_pieces.reserve(Capacity);
        m_pieces.push_back(std::move(work));
    }

    bool isFull() const { return m_pieces.size() == Capacity; }
    std::size_t size() const { return m_pieces.size(); }
    std::uint64_t serial() const { return m_serial; }

    /// The next piece, which is the caller's then; null when there is none.
    detail::QueuedWork* take()
    {
        const std::size_t index = m_next.fetch_add(1, std::memory_order_relaxed);
        return index < m_pieces.size() ? &m_pieces[index] : nullptr;
    }

    /// Keeps what nobody has taken from being taken any more.
    void withdraw() { m_withdrawn = m_next.exchange(m_pieces.size(), std::memory_order_relaxed); }

    /// Cancels and lets go of what was withdrawn.
    void discard()
    {
        for (; m_withdrawn < m_pieces.size(); ++m_withdrawn) {
            m_pieces[m_withdrawn].cancel();
            m_pieces[m_withdrawn].reset();
        }
    }

private:
    static constexpr std::size_t FirstPieces = 8; // most batches stay short: their work is taken as it comes

    const std::uint64_t m_serial;
    std::vector<detail::QueuedWork> m_pieces;
    std::atomic<std::size_t> m_next{0}; // beyond the end once they are used up
    std::size_t m_withdrawn = Capacity; // the first piece of those; of who withdraws alone
};

using BatchPtr = std::shared_ptr<Batch>;

} // namespace

/// Work arrives in batches; a thread that finds the current one used up makes the oldest that has arrived the current
/// one. So who adds work hardly ever meets who takes it, and who takes it meets the others at one counter.
///
/// What holds whenever no lock is held: all of `m_batch` is older than all of `m_arrivals`; a piece of work is in one
/// of these or has been taken by one thread; and each arrival wakes one more of the idle threads while there is one, so
/// that no work lies while a thread waits. Threads share this object: a scheduler that one of its tasks destroys leaves
/// them behind.
class AbstractTaskScheduler::Private : public std::enable_shared_from_this<AbstractTaskScheduler::Private>
{
public:
    explicit Private(std::size_t workers)
        : m_limit(workers)
    {
    }

    void enqueue(detail::QueuedWork&& work);
    void end(bool discard);
    void abandon();
    bool isOwnThread() const { return detail::SchedulerOfThread() == this; }
    std::size_t limit() const { return m_limit; }

private:
    void work();
    void runTask(detail::QueuedWork& work, const TaskPtr& job, std::uint64_t serial, TaskPtr& current);
    void startWorker();                    // under `m_arrivalMutex`
    void queue(detail::QueuedWork&& work); // the same
    std::size_t arrivals() const;          // the same
    void beginToEnd(bool discard);
    std::vector<VoThread> takeThreads();
    bool findBatch(BatchPtr& batch);
    void waitForArrival(std::unique_lock<std::mutex>& arrival);

    const std::size_t m_limit;

    std::mutex m_control; // serialises end(); taken before all others

    std::mutex m_mutex;                    // for the next three; taken before the other one
    BatchPtr m_batch;                      // older than all arrivals; null or used up where there is no more work
    std::vector<const TaskPtr*> m_current; // the task that each thread runs, or null; functions cannot be stopped
    std::uint64_t m_discarded = 0;         // serial of the last batch of which terminating left nothing

    std::mutex m_arrivalMutex; // for all below
    std::condition_variable m_wake;
    std::deque<BatchPtr> m_arrivals; // all but the last are full
    std::uint64_t m_batches = 0;     // made so far
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

std::size_t AbstractTaskScheduler::Private::arrivals() const
{
    return m_arrivals.empty() ? 0 : (m_arrivals.size() - 1) * Batch::Capacity + m_arrivals.back()->size();
}

void AbstractTaskScheduler::Private::queue(detail::QueuedWork&& work)
{
    if (m_arrivals.empty() || m_arrivals.back()->isFull())
        m_arrivals.push_back(std::make_shared<Batch>(++m_batches));
    m_arrivals.back()->add(std::move(work));
}

void AbstractTaskScheduler::Private::enqueue(detail::QueuedWork&& work)
{
    bool wakesOne = false;
    {
        const std::lock_guard<std::mutex> lock(m_arrivalMutex);
        if (m_threads.size() < m_limit && m_idle < arrivals() + 1 && !m_ending) {
            try {
                startWorker();
            } catch (const VoException&) {
                if (m_threads.empty())
                    throw; // with some threads the work is only done later
            }
        }
        queue(std::move(work));
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

// Another batch than the given one, which is used up. False when the thread shall end. Yields once before it waits, so
// that who adds much work gets to add more: falling asleep and being woken costs as much as many small tasks.
bool AbstractTaskScheduler::Private::findBatch(BatchPtr& batch)
{
    for (bool hasYielded = false;; hasYielded = true) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_batch && m_batch != batch) {
            batch = m_batch;
            return true;
        }
        std::unique_lock<std::mutex> arrival(m_arrivalMutex);
        if (!m_arrivals.empty()) {
            m_batch = std::move(m_arrivals.front());
            m_arrivals.pop_front();
            batch = m_batch;
            return true;
        }
        m_batch.reset(); // an empty one: this only gives back memory
        batch.reset();
        if (m_ending)
            return false;
        // The lock of the arrivals is held from looking to waiting: whatever comes after the look wakes a thread.
        lock.unlock();
        if (hasYielded) {
            waitForArrival(arrival);
        } else {
            arrival.unlock();
            std::this_thread::yield();
        }
    }
}

void AbstractTaskScheduler::Private::work()
{
    detail::SetSchedulerOfThread(this);
    TaskPtr current; // written under the lock: end() looks at it
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_current.push_back(&current);
    }
    for (BatchPtr batch; findBatch(batch);) {
        while (detail::QueuedWork* const work = batch->take()) {
            if (const TaskWork* const task = work->as<TaskWork>())
                runTask(*work, task->job, batch->serial(), current);
            else
                work->run();
            work->reset();
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_current.erase(std::find(m_current.begin(), m_current.end(), &current));
}

// end() stops what it sees to be running and what it discards. A task between these two, taken but not yet seen, is
// known by its batch.
void AbstractTaskScheduler::Private::runTask(detail::QueuedWork& work, const TaskPtr& job, std::uint64_t serial,
                                             TaskPtr& current)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    current = job;
    const bool isDiscarded = serial <= m_discarded;
    lock.unlock();
    if (isDiscarded)
        job->stop();
    work.run();
    lock.lock();
    current.reset(); // the piece of work holds it too: nothing is destroyed under the lock
}

// Lets the threads end once there is no more work, and stops and discards what there is if that is wanted.
void AbstractTaskScheduler::Private::beginToEnd(bool discard)
{
    std::deque<BatchPtr> discarded;
    std::vector<TaskPtr> stopped;
    {
        const std::scoped_lock lock(m_mutex, m_arrivalMutex);
        if (discard) {
            discarded.swap(m_arrivals);
            if (m_batch)
                discarded.push_front(std::exchange(m_batch, nullptr));
            for (const BatchPtr& batch : discarded)
                batch->withdraw();
            m_discarded = m_batches;
            for (const TaskPtr* job : m_current)
                if (*job)
                    stopped.push_back(*job);
        }
        m_ending = true;
    }
    m_wake.notify_all();
    for (const TaskPtr& job : stopped)
        job->stop();
    for (const BatchPtr& batch : discarded)
        batch->discard();
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
    enqueue(detail::QueuedWork(TaskWork{job}));
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

void AbstractTaskScheduler::enqueue(detail::QueuedWork&& work)
{
    m_private->enqueue(std::move(work));
}

bool AbstractTaskScheduler::isWorker() const noexcept
{
    return m_private->isOwnThread();
}

} // namespace vo::background_task
