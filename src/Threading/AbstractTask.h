#pragma once

#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>

#include <cstdint>
#include <functional>
#include <memory>

class VoReceiver;

namespace vo::background_task {

/// Work with a name for a task scheduler, which can be asked to stop and reports how far it is.
class VOCORE_EXPORT AbstractTask
{
public:
    /// How far a task is, in units of its own. The total is 0 when it is not known.
    struct Progress
    {
        std::uint64_t processed = 0; ///< Units done.
        std::uint64_t total = 0;     ///< Units in all.
    };

    explicit AbstractTask(const VoString& name); ///< A task that is called so in logs and lists.
    virtual ~AbstractTask();
    AbstractTask(const AbstractTask&) = delete;
    AbstractTask& operator=(const AbstractTask&) = delete;

    const VoString& name() const; ///< As given.

    /// Receives the progress, on the thread that runs the task.
    [[nodiscard]] VoReceiver connect(std::function<void(const Progress&)> callback);

    /// The work, called once. It may end early when `stop` is raised, by returning or, so that the task counts as
    /// cancelled, by VoStopFlag::throwIfStopped(). What it throws is the task's result.
    virtual void run(VoStopFlag stop) = 0;

protected:
    void reportProgress(std::uint64_t processed, std::uint64_t total); ///< Tells the receivers.

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::background_task
