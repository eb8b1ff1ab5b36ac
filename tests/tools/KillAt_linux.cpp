// Preloaded into a program that tests start: the process dies before the changing call of the number that VO_KILL_AT
// is.

#include "../Updater/SystemCalls_linux.h"

#include <cstdlib>

namespace {

[[gnu::constructor]] void ArmByEnvironment()
{
    if (const char* const number = std::getenv("VO_KILL_AT"))
        vo::test::Arm({vo::test::CallFault::Kind::Kill, std::strtoul(number, nullptr, 10), 0});
}

} // namespace
