#include <Application/VoSignalWatch.h>

#if defined(_WIN32)

#include <windows.h>

#include <csignal>
#include <mutex>
#include <utility>

namespace {

// The system calls the handler on a thread of its own, so it may call the function itself.
std::mutex& Mutex()
{
    static std::mutex& mutex = *new std::mutex; // consoles may be closed while the process ends
    return mutex;
}

std::function<void(int)>* current = nullptr; // under the mutex

bool Call(int signal)
{
    const std::lock_guard lock(Mutex());
    if (current == nullptr)
        return false; // the second time the system ends the process
    (*std::exchange(current, nullptr))(signal);
    return true;
}

BOOL WINAPI OnControl(DWORD event)
{
    const bool isAsked = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    if (!Call(isAsked ? SIGINT : SIGTERM))
        return FALSE;
    if (!isAsked)
        Sleep(INFINITE); // the system ends the process when this returns; the application is given its time to quit
    return TRUE;
}

} // namespace

struct VoSignalWatch::Private
{
    std::function<void(int)> function;
    std::function<void(int)>* outer = nullptr; // of the object around this one
};

VoSignalWatch::VoSignalWatch(std::function<void(int)> function)
    : m_private(std::make_unique<Private>(Private{std::move(function), nullptr}))
{
    {
        const std::lock_guard lock(Mutex());
        m_private->outer = std::exchange(current, &m_private->function);
    }
    SetConsoleCtrlHandler(OnControl, TRUE);
}

VoSignalWatch::~VoSignalWatch()
{
    SetConsoleCtrlHandler(OnControl, FALSE);
    const std::lock_guard lock(Mutex());
    current = m_private->outer;
}

#endif
