#include <Threading/UsableProcessors.h>

#if defined(_WIN32)

#include <algorithm>
#include <bitset>
#include <thread>

#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace vo::detail {

unsigned UsableProcessors() noexcept
{
    DWORD_PTR allowed = 0;
    DWORD_PTR present = 0;
    if (::GetProcessAffinityMask(::GetCurrentProcess(), &allowed, &present) && allowed != 0)
        return static_cast<unsigned>(std::bitset<64>(allowed).count());
    return std::max(std::thread::hardware_concurrency(), 1U);
}

} // namespace vo::detail

#endif
