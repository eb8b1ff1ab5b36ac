#include <Threading/detail/Processors.h>

#if defined(_WIN32)

#include <algorithm>
#include <bitset>
#include <thread>

#include <windows.h>

namespace vo::detail {

std::size_t AvailableProcessors() noexcept
{
    DWORD_PTR usable = 0;
    DWORD_PTR all = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &usable, &all) && usable != 0)
        return std::bitset<8 * sizeof(DWORD_PTR)>(usable).count();
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace vo::detail

#endif
