#include <Threading/TaskJob.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>

namespace vo::background_task::detail {

Job::~Job() = default;

void Job::stop() noexcept {}

void LogFailedWork()
{
    vo::logging::Logger::Get("tasks").error("Task failed: " + vo::CurrentExceptionText());
}

std::exception_ptr CancelledException()
{
    return std::make_exception_ptr(VoUserCancelledException());
}

} // namespace vo::background_task::detail
