#include "InterleavedTiming.h"
#include "ResultRow.h"

#include <Core/VoSharedPtr.h>
#include <Core/VoWeakPtr.h>
#include <Threading/VoEvent.h>
#include <Threading/VoEventLoop.h>
#include <Threading/VoParallelTaskScheduler.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QRunnable>
#include <QtCore/QThread>
#include <QtCore/QThreadPool>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

// The event queue between two threads beside the framework's and beside the plainest one, and small tasks on two
// workers beside the framework's pool. All figures are processor time of the whole process.

namespace {

std::atomic<std::size_t> Handled{0};

class CountingEvent final : public VoEvent
{
public:
    CountingEvent()
        : VoEvent(1)
    {
    }

private:
    void run() override { Handled.fetch_add(1, std::memory_order_relaxed); }
};

/// Many kinds of merging events wait at once: finding the one to merge with must not walk over the others.
class MergingEvent final : public VoEvent
{
public:
    explicit MergingEvent(std::int32_t type)
        : VoEvent(type)
    {
    }
    bool mergeable() const override { return true; }
    void merge(const VoEvent&) override {}
};

class QtReceiver final : public QObject
{
public:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        Handled.fetch_add(1, std::memory_order_relaxed);
        return true;
    }
};

void OurQueue(std::size_t events)
{
    VoEventLoop loop;
    loop.run();
    for (std::size_t i = 0; i < events; ++i)
        loop.add(VoSharedPtr<CountingEvent>::Make());
    loop.finish();
}

void QtQueue(std::size_t events)
{
    QThread thread;
    auto* const receiver = new QtReceiver;
    receiver->moveToThread(&thread);
    thread.start();
    for (std::size_t i = 0; i < events; ++i)
        QCoreApplication::postEvent(receiver, new QEvent(QEvent::User));
    QMetaObject::invokeMethod(
        receiver,
        [&] {
            delete receiver;
            thread.quit();
        },
        Qt::QueuedConnection);
    thread.wait();
}

/// A deque, a mutex and a condition; the events are shared pointers to objects with a virtual call, as ours are.
void BareQueue(std::size_t events)
{
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::shared_ptr<std::function<bool()>>> queue;
    std::thread thread([&] {
        for (;;) {
            std::unique_lock<std::mutex> lock(mutex);
            wake.wait(lock, [&] { return !queue.empty(); });
            const auto event = std::move(queue.front());
            queue.pop_front();
            lock.unlock();
            if (!(*event)())
                return;
        }
    });
    const auto add = [&](std::function<bool()> action) {
        auto event = std::make_shared<std::function<bool()>>(std::move(action));
        {
            const std::lock_guard<std::mutex> lock(mutex);
            queue.push_back(std::move(event));
        }
        wake.notify_one();
    };
    for (std::size_t i = 0; i < events; ++i)
        add([] {
            Handled.fetch_add(1, std::memory_order_relaxed);
            return true;
        });
    add([] { return false; });
    thread.join();
}

void MergeIntoWaiting(std::size_t events)
{
    VoEventLoop loop; // stopped: everything waits
    constexpr std::size_t Kinds = 100;
    for (std::size_t i = 0; i < events; ++i) {
        if (i % 2 == 0)
            loop.add(VoSharedPtr<CountingEvent>::Make());
        else
            loop.add(VoSharedPtr<MergingEvent>::Make(static_cast<std::int32_t>(2 + i % Kinds)));
    }
}

void OurTasks(std::size_t tasks)
{
    vo::background_task::VoParallelTaskScheduler scheduler(2);
    for (std::size_t i = 0; i < tasks; ++i)
        scheduler.start([] { Handled.fetch_add(1, std::memory_order_relaxed); });
    scheduler.finish();
}

void OurTasksWithFutures(std::size_t tasks)
{
    vo::background_task::VoParallelTaskScheduler scheduler(2);
    for (std::size_t i = 0; i < tasks; ++i)
        static_cast<void>(scheduler.add([] { Handled.fetch_add(1, std::memory_order_relaxed); }));
    scheduler.finish();
}

void QtTasks(std::size_t tasks)
{
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    for (std::size_t i = 0; i < tasks; ++i)
        pool.start([] { Handled.fetch_add(1, std::memory_order_relaxed); });
    pool.waitForDone();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const std::size_t count = IsSmokeRun() ? 1000 : 100000;
    const int repetitions = IsSmokeRun() ? 1 : 7;

    const auto queues =
        InterleavedTiming({[=] { OurQueue(count); }, [=] { BareQueue(count); }, [=] { QtQueue(count); }}, repetitions);
    PrintRow({"100,000 events to another thread, postEvent", Milliseconds(queues[0]), Milliseconds(queues[1]),
              Milliseconds(queues[2]) + " Qt", queues[2] / queues[0], 5, 0});
    PrintRow({"the same beside a bare deque", Milliseconds(queues[0]), Milliseconds(queues[1]), "-",
              queues[1] / queues[0], 0.7, 0});

    const auto merging =
        InterleavedTiming({[=] { MergeIntoWaiting(count / 4); }, [=] { MergeIntoWaiting(count); }}, repetitions);
    PrintRow({"100,000 waiting events that merge: time at 4n over n", Milliseconds(merging[1]), "-", "-",
              merging[1] / merging[0], 0, 6});

    const auto tasks = InterleavedTiming(
        {[=] { OurTasks(count); }, [=] { OurTasksWithFutures(count); }, [=] { QtTasks(count); }}, repetitions);
    const std::string pool = Milliseconds(tasks[2]) + " QThreadPool";
    PrintRow({"100,000 small tasks on two workers", Milliseconds(tasks[0]), "-", pool, tasks[2] / tasks[0], 2, 0});
    PrintRow({"the same with a future for each", Milliseconds(tasks[1]), "-", pool, tasks[2] / tasks[1], 0, 0});
}
