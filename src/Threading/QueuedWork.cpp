#include <Threading/QueuedWork.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>

namespace vo::background_task::detail {

void LogFailedWork()
{
    vo::logging::Logger::Get("tasks").error("Task failed: " + vo::CurrentExceptionText());
}

std::exception_ptr CancelledException()
{
    return std::make_exception_ptr(VoUserCancelledException());
}

} // namespace vo::background_task::detail
