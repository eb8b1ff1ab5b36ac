#pragma once

#include <Core/VoSharedPtr.h>
#include <Threading/AbstractTask.h>
#include <Threading/TaskHandle.h>
#include <Threading/VoStopFlag.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>

namespace vo::background_task::detail {

const void*
SchedulerOfThread() noexcept; ///< The scheduler that the calling thread works for; null on all other threads.
void SetSchedulerOfThread(const void* scheduler) noexcept; ///< For a thread that begins to work for one.

/// A task with its stop flag and result: what a handle and a scheduler share.
///
/// Waiting -> Running -> Done, Failed or Cancelled, or from Waiting to Cancelled at once: whoever claims the job makes
/// the next two changes, so no lock is held while the task runs. The task is let go as soon as it has ended, the result
/// when the last handle is.
class TaskJob final
{
public:
    TaskJob(VoSharedPtr<AbstractTask> task, const void* scheduler); ///< The scheduler is only compared.
    TaskJob(const TaskJob&) = delete;
    TaskJob& operator=(const TaskJob&) = delete;

    /// True for the first caller only. So a job may be run out of the queue's order by somebody who waits for it.
    bool claim() noexcept { return !m_claimed.exchange(true, std::memory_order_acq_rel); }

    void run() noexcept;    ///< The work; its failure is kept in the result. Only for who has claimed it.
    void cancel() noexcept; ///< Gives up the work unrun. Only for who has claimed it.
    void stop() noexcept;   ///< Cancels what nobody has claimed, asks the rest for an early end; from any thread.

    TaskHandle::State state() const;
    /// Waits for the end. A thread of the same scheduler runs the task itself if nobody has begun: it could be the only
    /// one there is.
    void wait();
    void result(); ///< Waits, and throws what the task threw.

private:
    bool hasEnded() const; // under `m_mutex`
    void setState(TaskHandle::State state, std::exception_ptr failure) noexcept;

    std::atomic<bool> m_claimed{false};
    const void* const m_scheduler;
    const VoStopFlag m_stop;
    VoSharedPtr<AbstractTask> m_task; // until it has ended

    mutable std::mutex m_mutex; // for the next three
    std::condition_variable m_changed;
    TaskHandle::State m_state = TaskHandle::State::Waiting;
    std::exception_ptr m_failure;
};

} // namespace vo::background_task::detail
