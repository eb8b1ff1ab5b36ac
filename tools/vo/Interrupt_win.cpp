#include <vo/Interrupt.h>

#include <windows.h>

#include <atomic>

namespace vo::tool {
namespace {

/// Valid while an Interrupt lives. The system calls the handler on a thread of its own, so it may raise the flag
/// itself.
std::atomic<VoStopFlag*> currentFlag{nullptr};

BOOL WINAPI OnControl(DWORD)
{
    // The second time there is no flag any more, and the system ends the process.
    VoStopFlag* const flag = currentFlag.exchange(nullptr);
    if (flag == nullptr)
        return FALSE;
    flag->stop();
    return TRUE;
}

} // namespace

struct Interrupt::Private
{
    VoStopFlag flag;
    VoStopFlag* outer = nullptr; // of the object around this one
};

Interrupt::Interrupt(const VoStopFlag& flag)
    : d(std::make_unique<Private>(Private{flag, nullptr}))
{
    d->outer = currentFlag.exchange(&d->flag);
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interrupt::~Interrupt()
{
    SetConsoleCtrlHandler(OnControl, FALSE);
    currentFlag = d->outer;
}

} // namespace vo::tool
