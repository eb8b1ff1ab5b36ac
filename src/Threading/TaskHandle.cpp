#include <Threading/TaskHandle.h>

#include <Threading/detail/TaskJob.h>

#include <utility>

namespace vo::background_task {

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

} // namespace vo::background_task
