#pragma once

#include <Threading/AbstractTaskScheduler.h>

namespace vo::background_task {

/// Runs work one piece at a time, in order of arrival, on one thread. Destruction terminates it.
class VOCORE_EXPORT VoSerialTaskScheduler : public AbstractTaskScheduler
{
public:
    VoSerialTaskScheduler(); ///< Without work, and without a thread until there is some.
    ~VoSerialTaskScheduler() override;
};

} // namespace vo::background_task
