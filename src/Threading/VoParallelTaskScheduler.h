#pragma once

#include <Threading/AbstractTaskScheduler.h>

#include <cstddef>
#include <functional>

namespace vo::background_task {

/// Runs work on several threads; it starts in order of arrival. Destruction terminates it.
class VOCORE_EXPORT VoParallelTaskScheduler : public AbstractTaskScheduler
{
public:
    VoParallelTaskScheduler();                             ///< With a thread for each processor it may use.
    explicit VoParallelTaskScheduler(std::size_t workers); ///< With `workers` threads, but at least one.
    ~VoParallelTaskScheduler() override;

    /// Calls `function` for pieces [first, last) that make up [`begin`, `end`), each of `grain` indices but for the
    /// last, on this thread and on the workers; returns when all have returned. A `grain` of 0 counts as 1. May be
    /// called from inside work of this scheduler. When a call throws, no further pieces are begun, and the first
    /// exception is thrown again here; others are logged in the category "tasks".
    void parallelFor(std::size_t begin, std::size_t end, std::size_t grain,
                     const std::function<void(std::size_t first, std::size_t last)>& function);
};

} // namespace vo::background_task
