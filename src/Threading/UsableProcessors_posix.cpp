#include <Threading/UsableProcessors.h>

#if !defined(_WIN32)

#include <algorithm>
#include <thread>

#if defined(__linux__)
#include <sched.h>
#endif

namespace vo::detail {

unsigned UsableProcessors() noexcept
{
#if defined(__linux__)
    cpu_set_t allowed;
    if (::sched_getaffinity(0, sizeof allowed, &allowed) == 0)
        return static_cast<unsigned>(std::max(CPU_COUNT(&allowed), 1));
#endif
    return std::max(std::thread::hardware_concurrency(), 1U);
}

} // namespace vo::detail

#endif
