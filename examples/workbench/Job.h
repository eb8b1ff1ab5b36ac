#pragma once

#include <Core/VoString.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoStopFlag.h>

#include <QtCore/QObject>

#include <functional>

/// One long piece of work at a time, on a thread of its own; what it tells arrives on the window's thread.
class Job
{
public:
    using Progress = std::function<void(double share, const VoString& what)>;      ///< A share from 0 to 1.
    using Work = std::function<VoString(const VoStopFlag& stop, const Progress&)>; ///< Returns what it found.
    using Done = std::function<void(const VoString& text)>;                        ///< Found, or why it failed.

    Job(QObject& window, Progress progress);
    ~Job(); ///< Stops the work and waits for it.

    void start(Work work, Done done);
    void stop() { m_stop.stop(); }
    bool isRunning() const { return m_isRunning; }

private:
    void tell(std::function<void()> what);

    QObject m_context; // what is told after it is gone is dropped
    Progress m_progress;
    VoStopFlag m_stop;
    bool m_isRunning = false;
    vo::background_task::VoParallelTaskScheduler m_thread{1};
};
