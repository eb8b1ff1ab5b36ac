#pragma once

#include <Core/VoExport.h>

#include <functional>
#include <memory>
#include <thread>

namespace vo::detail {
struct ThreadMaker;
} // namespace vo::detail

/// A movable handle over one thread of the operating system. Event loops and task schedulers make their threads with
/// it.
///
/// A handle whose thread is still joinable must not be destroyed or assigned over: that logs the critical message
/// "Thread destroyed whilst still running" in the category "threads" and ends the process.
class VOCORE_EXPORT VoThread
{
public:
    VoThread() noexcept;                            ///< No thread.
    VoThread(VoThread&& other) noexcept;            ///< Takes the thread over; `other` has none then.
    VoThread& operator=(VoThread&& other) noexcept; ///< Takes the thread over; `other` has none then.
    ~VoThread();
    VoThread(const VoThread&) = delete;
    VoThread& operator=(const VoThread&) = delete;

    /// Waits for the thread's end.
    /// @throws VoJoinThreadException ("Invalid thread join call") without a joinable thread, and when the thread would
    /// join itself
    void join();

    /// Lets the thread run on by itself and clears the handle.
    /// @throws VoDetachThreadException ("Invalid thread detach call") without a joinable thread
    void detach();

    bool joinable() const noexcept;      ///< Whether there is a thread that has been neither joined nor detached.
    std::thread::id id() const noexcept; ///< The thread's identifier; that of no thread when not joinable.

private:
    friend struct vo::detail::ThreadMaker; // no function, which Windows cannot export and befriend at once
    explicit VoThread(std::function<void()> function);

    struct Private;
    std::unique_ptr<Private> m_private;
};
