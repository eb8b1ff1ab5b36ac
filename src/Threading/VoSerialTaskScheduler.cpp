#include <Threading/VoSerialTaskScheduler.h>

namespace vo::background_task {

VoSerialTaskScheduler::VoSerialTaskScheduler()
    : AbstractTaskScheduler(1)
{
}

VoSerialTaskScheduler::~VoSerialTaskScheduler() = default;

} // namespace vo::background_task
