#include <Threading/VoThread.h>

#include <Subsystem/VoLogging.h>
#include <Threading/VoThreadException.h>
#include <Threading/detail/ThreadFactory.h>

#include <exception>
#include <system_error>
#include <utility>

struct VoThread::Private
{
    std::thread thread;
};

VoThread::VoThread() noexcept = default;

VoThread::VoThread(std::function<void()> function)
    : m_private(std::make_unique<Private>())
{
    try {
        m_private->thread = std::thread(std::move(function));
    } catch (const std::system_error& e) {
        throw VoThreadException(VoString(e.what()));
    }
}

VoThread::VoThread(VoThread&& other) noexcept = default;

namespace {

[[noreturn]] void EndProcess()
{
    vo::logging::Logger::Get("threads").critical("Thread destroyed whilst still running");
    std::terminate();
}

} // namespace

VoThread& VoThread::operator=(VoThread&& other) noexcept
{
    if (this == &other)
        return *this;
    if (joinable())
        EndProcess();
    m_private = std::move(other.m_private);
    return *this;
}

VoThread::~VoThread()
{
    if (joinable())
        EndProcess();
}

void VoThread::join()
{
    // A thread that joins itself while another waits for it makes two joins of one thread, which the system leaves
    // undefined; it is not even asked.
    if (!m_private || id() == std::this_thread::get_id())
        throw VoJoinThreadException();
    try {
        m_private->thread.join();
    } catch (const std::system_error&) {
        throw VoJoinThreadException();
    }
}

void VoThread::detach()
{
    if (!joinable())
        throw VoDetachThreadException();
    try {
        m_private->thread.detach();
    } catch (const std::system_error&) {
        throw VoDetachThreadException();
    }
    m_private.reset();
}

bool VoThread::joinable() const noexcept
{
    return m_private && m_private->thread.joinable();
}

std::thread::id VoThread::id() const noexcept
{
    return m_private ? m_private->thread.get_id() : std::thread::id();
}

struct vo::detail::ThreadMaker
{
    static VoThread make(std::function<void()> function) { return VoThread(std::move(function)); }
};

VoThread vo::detail::CreateThread(std::function<void()> function, const char* name)
{
    return ThreadMaker::make([function = std::move(function), name] {
        NameCurrentThread(name);
        function();
    });
}

void vo::detail::FinishThread(VoThread& thread)
{
    if (!thread.joinable())
        return;
    if (thread.id() == std::this_thread::get_id())
        thread.detach();
    else
        thread.join();
}
