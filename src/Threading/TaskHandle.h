#pragma once

#include <Core/VoExport.h>

#include <memory>

namespace vo::background_task {

namespace detail {
class TaskJob;
}

/// Follows one task that was given to a scheduler. Copies refer to the same task; they may outlive the scheduler. All
/// members may be called from any thread.
class VOCORE_EXPORT TaskHandle
{
public:
    /// Where a task is.
    enum class State
    {
        Waiting,  ///< Queued.
        Running,  ///< Being run.
        Done,     ///< Has returned.
        Failed,   ///< Has thrown; result() throws it again.
        Cancelled ///< Was stopped before it ran, or threw VoUserCancelledException after it was asked to stop.
    };

    State state() const; ///< Where the task is now.

    /// Waits for the task's end. On a worker of the task's scheduler a task that is still waiting is run at once, on
    /// this thread, so that tasks may wait for tasks they have added.
    void wait() const;

    /// Waits as wait(), then throws what the task threw, or VoUserCancelledException for a cancelled one.
    void result() const;

    /// Cancels a waiting task; raises the stop flag of a running one.
    void stop() const;

private:
    friend class AbstractTaskScheduler;
    explicit TaskHandle(std::shared_ptr<detail::TaskJob> job);

    std::shared_ptr<detail::TaskJob> m_job;
};

} // namespace vo::background_task
