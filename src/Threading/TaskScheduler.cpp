#include <Threading/AbstractTaskScheduler.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoSerialTaskScheduler.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/detail/Callback.h>
#include <Subsystem/VoLogging.h>
#include <Threading/detail/Processors.h>
#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vo::background_task {

namespace detail {

Job::~Job() = default;

void Job::stop() noexcept {}

void LogFailedWork()
{
    vo::logging::Logger::Get("tasks").error("Task failed: " + vo::CurrentExceptionText());
}

std::exception_ptr CancelledException()
{
    return std::make_exception_ptr(VoUserCancelledException());
}

namespace {

// The scheduler that the current thread works for; null on all other threads.
thread_local const void* CurrentScheduler = nullptr;

} // namespace

/// A task with its stop flag and result.
class TaskJob final : public Job
{
public:
    TaskJob(VoSharedPtr<AbstractTask> task, const void* scheduler)
        : m_scheduler(scheduler)
        , m_task(std::move(task))
    {
    }

    void run() noexcept override
    {
        setState(TaskHandle::State::Running, nullptr);
        try {
            m_task->run(m_stop);
            setState(TaskHandle::State::Done, nullptr);
        } catch (const VoUserCancelledException&) {
            setState(m_stop.isStopped() ? TaskHandle::State::Cancelled : TaskHandle::State::Failed,
                     std::current_exception());
        } catch (...) {
            setState(TaskHandle::State::Failed, std::current_exception());
        }
    }

    void cancel() noexcept override { setState(TaskHandle::State::Cancelled, CancelledException()); }

    void stop() noexcept override
    {
        m_stop.stop();
        if (claim())
            cancel();
    }

    TaskHandle::State state() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_state;
    }

    void wait()
    {
        if (CurrentScheduler == m_scheduler && claim()) {
            run();
            return;
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return hasEnded(); });
    }

    void result()
    {
        wait();
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    bool hasEnded() const { return m_state != TaskHandle::State::Waiting && m_state != TaskHandle::State::Running; }

    void setState(TaskHandle::State state, std::exception_ptr failure) noexcept
    {
        VoSharedPtr<AbstractTask> finished; // destroyed outside the lock
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_state = state;
        m_failure = std::move(failure);
        if (hasEnded()) {
            finished.swap(m_task);
            m_changed.notify_all();
        }
    }

    const void* const m_scheduler; // only compared
    const VoStopFlag m_stop;
    VoSharedPtr<AbstractTask> m_task; // until it has ended

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    TaskHandle::State m_state = TaskHandle::State::Waiting;
    std::exception_ptr m_failure;
};

} // namespace detail

TaskHandle::TaskHandle(std::shared_ptr<detail::TaskJob> job)
    : m_job(std::move(job))
{
}

TaskHandle::State TaskHandle::state() const
{
    return m_job->state();
}

void TaskHandle::wait() const
{
    m_job->wait();
}

void TaskHandle::result() const
{
    m_job->result();
}

void TaskHandle::stop() const
{
    m_job->stop();
}

/// Work arrives in one queue and is taken from another; a thread that finds the second one empty exchanges them. So who
/// adds work hardly ever meets who takes it.
class AbstractTaskScheduler::Private : public std::enable_shared_from_this<AbstractTaskScheduler::Private>
{
public:
    using JobPtr = std::shared_ptr<detail::Job>;

    explicit Private(std::size_t workers)
        : limit(workers)
    {
    }

    void enqueue(JobPtr job);
    void end(bool discard);
    void abandon();
    bool isOwnThread() const { return detail::CurrentScheduler == this; }
    void work();

    const std::size_t limit;

private:
    void startWorker(); // under `arrivalMutex`
    void beginToEnd(bool discard);
    std::vector<VoThread> takeThreads();
    bool findWork(std::unique_lock<std::mutex>& lock);
    void waitForArrival(std::unique_lock<std::mutex>& arrival);

    std::mutex control; // serialises end()

    std::mutex mutex;                   // for the next two; taken before the other one
    std::deque<JobPtr> queue;           // older than all arrivals
    std::vector<const JobPtr*> current; // what each thread runs; null while it looks for work

    std::mutex arrivalMutex; // for all below
    std::condition_variable wake;
    std::deque<JobPtr> arrivals;
    std::vector<VoThread> threads;
    std::size_t idle = 0;  // threads that wait
    std::size_t woken = 0; // at most as many as of these are about to go on
    bool ending = false;
};

void AbstractTaskScheduler::Private::startWorker()
{
    threads.reserve(threads.size() + 1);
    threads.push_back(vo::detail::CreateThread([self = shared_from_this()] { self->work(); }, "vo worker"));
}

void AbstractTaskScheduler::Private::enqueue(JobPtr job)
{
    bool wakesOne = false;
    {
        const std::lock_guard<std::mutex> lock(arrivalMutex);
        if (idle < arrivals.size() + 1 && threads.size() < limit && !ending) {
            try {
                startWorker();
            } catch (const VoException&) {
                if (threads.empty())
                    throw; // with some threads the work is only done later
            }
        }
        arrivals.push_back(std::move(job));
        // A call of the system for each of many small jobs would cost more than they do.
        wakesOne = woken < idle;
        woken += wakesOne ? 1 : 0;
    }
    if (wakesOne)
        wake.notify_one();
}

// Also returns without one.
void AbstractTaskScheduler::Private::waitForArrival(std::unique_lock<std::mutex>& arrival)
{
    ++idle;
    wake.wait(arrival);
    --idle;
    // Whoever comes counts as the one that was woken: it is never believed that more are coming than are.
    woken -= std::min<std::size_t>(woken, 1);
}

// With the lock of `mutex`. False when the thread shall end.
bool AbstractTaskScheduler::Private::findWork(std::unique_lock<std::mutex>& lock)
{
    while (queue.empty()) {
        std::unique_lock<std::mutex> arrival(arrivalMutex);
        queue.swap(arrivals);
        if (!queue.empty())
            return true;
        if (ending)
            return false;
        lock.unlock();
        waitForArrival(arrival);
        arrival.unlock();
        lock.lock();
    }
    return true;
}

void AbstractTaskScheduler::Private::work()
{
    detail::CurrentScheduler = this;
    JobPtr job;  // written under the lock: end() looks at it
    JobPtr done; // what it holds is released without the lock
    std::unique_lock<std::mutex> lock(mutex);
    current.push_back(&job);
    for (;;) {
        if (done && queue.empty()) {
            lock.unlock();
            done.reset();
            lock.lock();
        }
        if (!findWork(lock))
            break;
        job = std::move(queue.front());
        queue.pop_front();
        lock.unlock();
        done.reset();
        if (job->claim())
            job->run();
        lock.lock();
        done.swap(job);
    }
    current.erase(std::find(current.begin(), current.end(), &job));
}

// Lets the threads end once there is no more work, and stops and discards what there is if that is wanted.
void AbstractTaskScheduler::Private::beginToEnd(bool discard)
{
    std::deque<JobPtr> discarded;
    std::vector<JobPtr> stopped;
    {
        const std::scoped_lock lock(mutex, arrivalMutex);
        if (discard) {
            discarded.swap(queue);
            discarded.insert(discarded.end(), arrivals.begin(), arrivals.end());
            arrivals.clear();
            for (const JobPtr* job : current)
                if (*job)
                    stopped.push_back(*job);
        }
        ending = true;
    }
    wake.notify_all();
    for (const JobPtr& job : stopped)
        job->stop();
    for (const JobPtr& job : discarded)
        if (job->claim())
            job->cancel();
}

std::vector<VoThread> AbstractTaskScheduler::Private::takeThreads()
{
    const std::lock_guard<std::mutex> lock(arrivalMutex);
    return std::exchange(threads, std::vector<VoThread>());
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
    const std::lock_guard<std::mutex> controlLock(control);
    beginToEnd(discard);
    for (VoThread& thread : takeThreads())
        thread.join();
    const std::lock_guard<std::mutex> lock(arrivalMutex);
    ending = false;
    // Work that was added while the last threads were leaving.
    if (!arrivals.empty())
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
    return m_private->limit;
}

void AbstractTaskScheduler::enqueue(std::shared_ptr<detail::Job> job)
{
    m_private->enqueue(std::move(job));
}

bool AbstractTaskScheduler::isWorker() const noexcept
{
    return m_private->isOwnThread();
}

VoSerialTaskScheduler::VoSerialTaskScheduler()
    : AbstractTaskScheduler(1)
{
}

VoSerialTaskScheduler::~VoSerialTaskScheduler() = default;

VoParallelTaskScheduler::VoParallelTaskScheduler()
    : VoParallelTaskScheduler(vo::detail::AvailableProcessors())
{
}

VoParallelTaskScheduler::VoParallelTaskScheduler(std::size_t workers)
    : AbstractTaskScheduler(workers)
{
}

VoParallelTaskScheduler::~VoParallelTaskScheduler() = default;

namespace {

using RangeFunction = std::function<void(std::size_t, std::size_t)>;

/// The pieces of one parallelFor, handed out to whoever asks. Helpers that come too late find nothing left and do not
/// touch the function any more, so the caller need not wait for them.
class Pieces
{
public:
    Pieces(std::size_t begin, std::size_t end, std::size_t grain, const RangeFunction& function)
        : m_end(end)
        , m_grain(grain)
        , m_function(function)
        , m_next(begin)
    {
    }

    void help() noexcept
    {
        std::size_t first = 0;
        std::size_t last = 0;
        while (take(first, last)) {
            std::exception_ptr failure;
            try {
                m_function(first, last);
            } catch (...) {
                failure = std::current_exception();
            }
            giveBack(std::move(failure));
        }
    }

    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_idle.wait(lock, [this] { return m_active == 0 && m_next == m_end; });
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    bool take(std::size_t& first, std::size_t& last)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_next == m_end)
            return false;
        first = m_next;
        last = m_end - m_next > m_grain ? m_next + m_grain : m_end;
        m_next = last;
        ++m_active;
        return true;
    }

    void giveBack(std::exception_ptr failure) noexcept
    {
        if (failure)
            keep(std::move(failure));
        const std::lock_guard<std::mutex> lock(m_mutex);
        --m_active;
        if (m_active == 0 && m_next == m_end)
            m_idle.notify_all();
    }

    void keep(std::exception_ptr failure) noexcept
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_next = m_end;
            if (!m_failure) {
                m_failure = std::move(failure);
                return;
            }
        }
        try {
            std::rethrow_exception(failure);
        } catch (...) {
            vo::logging::Logger::Get("tasks").error("Parallel work failed: " + vo::CurrentExceptionText());
        }
    }

    const std::size_t m_end;
    const std::size_t m_grain;
    const RangeFunction& m_function;

    std::mutex m_mutex; // for all below
    std::condition_variable m_idle;
    std::size_t m_next;
    std::size_t m_active = 0;
    std::exception_ptr m_failure;
};

} // namespace

void VoParallelTaskScheduler::parallelFor(std::size_t begin, std::size_t end, std::size_t grain,
                                          const RangeFunction& function)
{
    vo::detail::RequireCallback(function);
    if (begin >= end)
        return;
    grain = std::max<std::size_t>(1, grain);
    const std::size_t pieces = (end - begin - 1) / grain + 1;
    const auto shared = std::make_shared<Pieces>(begin, end, grain, function);
    const std::size_t helpers = std::min(pieces - 1, isWorker() ? workers() - 1 : workers());
    for (std::size_t i = 0; i < helpers; ++i)
        start([shared] { shared->help(); });
    shared->help();
    shared->wait();
}

} // namespace vo::background_task
