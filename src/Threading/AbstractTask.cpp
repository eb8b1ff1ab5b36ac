#include <Threading/AbstractTask.h>

#include <Threading/VoBroadcaster.h>
#include <Threading/VoReceiver.h>

#include <utility>

namespace vo::background_task {

struct AbstractTask::Private
{
    VoString name;
    VoBroadcaster<const Progress&> progress{};
};

AbstractTask::AbstractTask(const VoString& name)
    : m_private(std::make_unique<Private>())
{
    m_private->name = name;
}

AbstractTask::~AbstractTask() = default;

const VoString& AbstractTask::name() const
{
    return m_private->name;
}

VoReceiver AbstractTask::connect(std::function<void(const Progress&)> callback)
{
    return m_private->progress.connect(std::move(callback));
}

void AbstractTask::reportProgress(std::uint64_t processed, std::uint64_t total)
{
    m_private->progress.broadcast(Progress{processed, total});
}

} // namespace vo::background_task
