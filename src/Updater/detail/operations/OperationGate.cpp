#include <Updater/detail/operations/OperationGate.h>

#include <Core/VoException.h>
#include <Download/VoDownloadManager.h>
#include <Download/detail/VoDownloadManagerImpl.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>

#include <algorithm>

namespace vo::updater::detail {

namespace {

[[noreturn]] void Refuse()
{
    throw VoInvalidCallException("An installation is already running");
}

} // namespace

struct OperationGate::Waiter
{
    QEventLoop loop;
    bool isWoken = false; // with the mutex held
};

void OperationGate::enter()
{
    const bool servesDownloads = VoDownloadManager::IsOwner();
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_inside == std::this_thread::get_id())
        Refuse();
    if (!servesDownloads) {
        m_freed.wait(lock, [this] { return m_inside == std::thread::id(); });
    } else if (m_inside != std::thread::id()) {
        if (!QCoreApplication::instance() || VoDownloadManagerImpl::IsInCallback())
            Refuse();
    }
    while (m_inside != std::thread::id()) {
        Waiter waiter;
        m_waiters.push_back(&waiter);
        lock.unlock();
        waiter.loop.exec();
        lock.lock();
        m_waiters.erase(std::find(m_waiters.begin(), m_waiters.end(), &waiter));
        // The loop was ended by somebody else: no loop of this thread will run any more.
        if (!waiter.isWoken && m_inside != std::thread::id())
            Refuse();
    }
    m_inside = std::this_thread::get_id();
}

void OperationGate::leave() noexcept
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_inside = std::thread::id();
    // One of them is enough, but a loop can return only when those that were begun within it have.
    for (Waiter* const waiter : m_waiters) {
        waiter->isWoken = true;
        // Queued, because the loop may not run yet; by its name, so that race detectors see the framework alone at
        // work.
        QMetaObject::invokeMethod(&waiter->loop, "quit", Qt::QueuedConnection);
    }
    m_freed.notify_one();
}

} // namespace vo::updater::detail
