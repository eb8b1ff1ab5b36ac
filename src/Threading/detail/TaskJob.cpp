#include <Threading/detail/TaskJob.h>

#include <Core/VoException.h>
#include <Threading/QueuedWork.h>

#include <utility>

namespace vo::background_task::detail {

namespace {

thread_local const void* CurrentScheduler = nullptr;

} // namespace

const void* SchedulerOfThread() noexcept
{
    return CurrentScheduler;
}

void SetSchedulerOfThread(const void* scheduler) noexcept
{
    CurrentScheduler = scheduler;
}

TaskJob::TaskJob(VoSharedPtr<AbstractTask> task, const void* scheduler)
    : m_scheduler(scheduler)
    , m_task(std::move(task))
{
}

void TaskJob::run() noexcept
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

void TaskJob::cancel() noexcept
{
    setState(TaskHandle::State::Cancelled, CancelledException());
}

void TaskJob::stop() noexcept
{
    m_stop.stop();
    if (claim())
        cancel();
}

TaskHandle::State TaskJob::state() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_state;
}

void TaskJob::wait()
{
    if (CurrentScheduler == m_scheduler && claim()) {
        run();
        return;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return hasEnded(); });
}

void TaskJob::result()
{
    wait();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failure)
        std::rethrow_exception(m_failure);
}

bool TaskJob::hasEnded() const
{
    return m_state != TaskHandle::State::Waiting && m_state != TaskHandle::State::Running;
}

void TaskJob::setState(TaskHandle::State state, std::exception_ptr failure) noexcept
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

} // namespace vo::background_task::detail
