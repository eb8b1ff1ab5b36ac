#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QObject>

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace vo::detail {

/// Functions that any thread gives and the framework's loop of one thread calls, in their order: that of the thread
/// which made this, unless it was moved. What is left when this ends is not called. They pass under a lock of their own,
/// so that race detectors, which do not see into the framework's queue, see it too.
class QueuedFunctions final : public QObject
{
public:
    void post(std::function<void()> function)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_functions.push_back(std::move(function));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

private:
    void customEvent(QEvent*) override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const std::function<void()> next = std::move(m_functions.front());
        m_functions.pop_front();
        lock.unlock();
        next();
    }

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_functions; // one for each event on its way
};

} // namespace vo::detail
