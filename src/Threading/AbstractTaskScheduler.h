#pragma once

#include <Core/VoExport.h>
#include <Core/VoSharedPtr.h>
#include <Threading/AbstractTask.h>
#include <Threading/QueuedWork.h>
#include <Threading/TaskHandle.h>

#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>

namespace vo::background_task {

/// What the serial and the parallel scheduler share: a queue of work in order of arrival, and the threads that run it,
/// started with the first work. All members may be called from any thread.
class VOCORE_EXPORT AbstractTaskScheduler
{
public:
    AbstractTaskScheduler(const AbstractTaskScheduler&) = delete;
    AbstractTaskScheduler& operator=(const AbstractTaskScheduler&) = delete;
    /// As terminate(). A task of its own may destroy the scheduler: that waits for nothing, and each thread ends by
    /// itself after what it runs.
    virtual ~AbstractTaskScheduler();

    /// Queues a task.
    /// @throws VoNullPointerException with "Null task"
    /// @throws VoThreadException when the first thread cannot be started
    TaskHandle add(VoSharedPtr<AbstractTask> task);

    /// Queues a function without arguments. What it returns or throws comes out of the future; when it is discarded by
    /// terminate() that throws VoUserCancelledException. Waiting for the future on a worker of the same scheduler
    /// blocks that worker. Throws as the other form.
    template <typename Function, std::enable_if_t<std::is_invocable_v<std::decay_t<Function>&>, int> = 0>
    auto add(Function&& function)
    {
        detail::PromisedWork<std::decay_t<Function>> work{std::forward<Function>(function)};
        auto future = work.promise.get_future();
        enqueue(detail::QueuedWork(std::move(work)));
        return future;
    }

    /// Queues a function without arguments whose result nobody wants: much cheaper than add(). What it throws is logged
    /// in the category "tasks"; what it returns is lost. Throws as the first form of add().
    template <typename Function, std::enable_if_t<std::is_invocable_v<std::decay_t<Function>&>, int> = 0>
    void start(Function&& function)
    {
        enqueue(detail::QueuedWork(detail::DetachedWork<std::decay_t<Function>>{std::forward<Function>(function)}));
    }

    /// Waits until all queued work has run, then ends the threads. Work added later starts them again.
    /// @throws VoInvalidCallException with "Scheduler cannot wait for itself" on one of its own threads
    void finish();

    /// Raises the stop flags of the running tasks, cancels the queued work, waits for what runs, and ends the threads.
    /// Throws as finish().
    void terminate();

    std::size_t workers() const noexcept; ///< Number of threads that run the work.

protected:
    explicit AbstractTaskScheduler(std::size_t workers); ///< With at least one thread.

    void enqueue(detail::QueuedWork&& work); ///< Queues work and sees that a thread takes it.
    bool isWorker() const noexcept;          ///< Whether the calling thread is one of this scheduler's.

private:
    class Private;
    std::shared_ptr<Private> m_private; // shared with the threads
};

} // namespace vo::background_task
