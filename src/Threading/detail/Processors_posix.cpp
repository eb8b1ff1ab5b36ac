#include <Threading/detail/Processors.h>

#if !defined(_WIN32)

#include <algorithm>
#include <thread>

#if defined(__linux__)
#include <sched.h>
#endif

namespace vo::detail {

std::size_t AvailableProcessors() noexcept
{
#if defined(__linux__)
    cpu_set_t usable;
    CPU_ZERO(&usable);
    if (sched_getaffinity(0, sizeof usable, &usable) == 0 && CPU_COUNT(&usable) > 0)
        return static_cast<std::size_t>(CPU_COUNT(&usable));
#endif
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace vo::detail

#endif
