#include <Threading/VoStoppableEvent.h>

VoStoppableEvent::VoStoppableEvent(std::int32_t type) noexcept
    : VoEvent(type)
{
}

VoStoppableEvent::~VoStoppableEvent() = default;

void VoStoppableEvent::stop()
{
    m_stopped = true;
    onStop();
}

bool VoStoppableEvent::isRunning() const noexcept
{
    return m_running;
}

bool VoStoppableEvent::isStopped() const noexcept
{
    return m_stopped;
}

void VoStoppableEvent::run()
{
    struct Running
    {
        explicit Running(std::atomic<bool>& flag)
            : m_flag(flag)
        {
            m_flag = true;
        }
        ~Running() { m_flag = false; }
        std::atomic<bool>& m_flag;
    };

    // First running, then the question: a stop() at the same moment either prevents execute() or sees the event
    // running.
    const Running running(m_running);
    if (!m_stopped)
        execute();
}
