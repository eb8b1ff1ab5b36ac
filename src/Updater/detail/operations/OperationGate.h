#pragma once

#include <Core/VoExport.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace vo::updater::detail {

/// Lets one thread at a time change what is installed.
///
/// The thread that owns the download service waits with its event loop running: the one that it waits for may be
/// waiting for a download, which comes in through that loop.
class VOCORE_PRIVATE_EXPORT OperationGate
{
public:
    /// Waits until no other thread is inside.
    /// @throws VoInvalidCallException ("An installation is already running") when this thread is inside already, and
    /// when it owns the download service and cannot run its loop: in a callback of that service, or because the
    /// application is quitting
    void enter();
    void leave() noexcept;

private:
    struct Waiter;

    std::mutex m_mutex;
    std::condition_variable m_freed;
    std::thread::id m_inside;       // nobody: the value of no thread
    std::vector<Waiter*> m_waiters; // that run their loops
};

} // namespace vo::updater::detail
