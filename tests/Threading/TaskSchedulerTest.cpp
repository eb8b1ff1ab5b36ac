#include <VoTestSupport.h>

#include <LogCapture.h>

#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoSerialTaskScheduler.h>

#include <array>
#include <future>
#include <memory>
#include <numeric>

using namespace vo::background_task;

namespace {

class FunctionTask : public AbstractTask
{
public:
    explicit FunctionTask(std::function<void(FunctionTask&, const VoStopFlag&)> function)
        : AbstractTask("test")
        , m_function(std::move(function))
    {
    }
    void run(VoStopFlag stop) override { m_function(*this, stop); }
    using AbstractTask::reportProgress;

private:
    std::function<void(FunctionTask&, const VoStopFlag&)> m_function;
};

VoSharedPtr<AbstractTask> Task(std::function<void(FunctionTask&, const VoStopFlag&)> function)
{
    return VoSharedPtr<AbstractTask>(new FunctionTask(std::move(function)));
}

/// Keeps a worker busy until it is released or, as a task, stopped.
struct Blocker
{
    std::promise<void> entered, release;
    std::shared_future<void> released = release.get_future().share();

    void operator()()
    {
        entered.set_value();
        released.wait();
    }
};

} // namespace

TEST(SerialScheduler, RunsInOrderOfArrivalOnOneThread)
{
    VoSerialTaskScheduler scheduler;
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int i = 0; i < 100; ++i)
        scheduler.add([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        });
    scheduler.finish();
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(expected, order);
    EXPECT_EQ(std::vector<std::thread::id>(100, threads.front()), threads);
    EXPECT_EQ(5, scheduler.add([] { return 5; }).get()) << "work added after finish() starts the thread again";
}

TEST(SerialScheduler, FuturesCarryResultsAndExceptionsOfAnyType)
{
    VoSerialTaskScheduler scheduler;
    EXPECT_EQ("text", scheduler.add([] { return std::string("text"); }).get());
    EXPECT_THROW_MSG(scheduler.add([] { throw VoNotFoundException("x"); }).get(), VoNotFoundException,
                     "Item not found: x");
    EXPECT_THROW(scheduler.add([]() -> int { throw 1; }).get(), int);
}

TEST(SerialScheduler, TerminateCancelsTheQueueAndStopsTheRunningTask)
{
    VoSerialTaskScheduler scheduler;
    std::promise<void> entered;
    const TaskHandle running = scheduler.add(Task([&](FunctionTask&, const VoStopFlag& stop) {
        entered.set_value();
        std::promise<void> stopped;
        const VoReceiver receiver = stop.onStop([&] { stopped.set_value(); });
        stopped.get_future().wait();
        stop.throwIfStopped();
    }));
    const TaskHandle queued = scheduler.add(Task([](FunctionTask&, const VoStopFlag&) { ADD_FAILURE(); }));
    std::future<int> future = scheduler.add([] { return 1; });
    entered.get_future().wait();
    EXPECT_EQ(TaskHandle::State::Running, running.state());
    EXPECT_EQ(TaskHandle::State::Waiting, queued.state());
    scheduler.terminate();
    EXPECT_EQ(TaskHandle::State::Cancelled, running.state());
    EXPECT_EQ(TaskHandle::State::Cancelled, queued.state());
    EXPECT_THROW_MSG(queued.result(), VoUserCancelledException, "User cancelled");
    EXPECT_THROW_MSG(future.get(), VoUserCancelledException, "User cancelled");
}

TEST(SerialScheduler, StartedFunctionsRunInTurnAndTheirFailuresAreOnlyLogged)
{
    const vo::test::LogCapture log;
    VoSerialTaskScheduler scheduler;
    std::vector<int> order;
    scheduler.start([&] { order.push_back(1); });
    const std::future<void> between = scheduler.add([&] { order.push_back(2); });
    scheduler.start([] { throw VoNotFoundException("x"); });
    scheduler.start([&] { order.push_back(3); });
    scheduler.finish();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), order);
    EXPECT_EQ(std::vector<std::string>{"Task failed: Item not found: x"}, log.texts("tasks"));

    Blocker blocker;
    const auto held = std::make_shared<int>();
    scheduler.start(std::ref(blocker));
    scheduler.start([held] { ADD_FAILURE(); });
    blocker.entered.get_future().wait();
    std::thread ending([&] { scheduler.terminate(); });
    while (held.use_count() > 1)
        std::this_thread::yield(); // dropped while the running one goes on
    blocker.release.set_value();
    ending.join();
}

TEST(TaskHandle, StopsOneTaskAndTellsWhatBecameOfEach)
{
    VoSerialTaskScheduler scheduler;
    Blocker blocker;
    scheduler.add(std::ref(blocker));
    const TaskHandle stopped = scheduler.add(Task([](FunctionTask&, const VoStopFlag&) { ADD_FAILURE(); }));
    const TaskHandle failed =
        scheduler.add(Task([](FunctionTask&, const VoStopFlag&) { throw std::runtime_error("f"); }));
    const TaskHandle cancelledByItself =
        scheduler.add(Task([](FunctionTask&, const VoStopFlag&) { throw VoUserCancelledException(); }));
    std::vector<std::uint64_t> progress;
    const VoSharedPtr<AbstractTask> task = Task([](FunctionTask& self, const VoStopFlag&) {
        self.reportProgress(1, 2);
        self.reportProgress(2, 2);
    });
    const VoReceiver receiver =
        task->connect([&](const AbstractTask::Progress& p) { progress.push_back(p.processed); });
    const TaskHandle done = scheduler.add(task);
    stopped.stop();
    EXPECT_EQ(TaskHandle::State::Cancelled, stopped.state());
    blocker.release.set_value();
    done.wait();
    EXPECT_EQ(TaskHandle::State::Done, done.state());
    EXPECT_EQ((std::vector<std::uint64_t>{1, 2}), progress);
    EXPECT_EQ(TaskHandle::State::Failed, failed.state());
    EXPECT_THROW(failed.result(), std::runtime_error);
    EXPECT_EQ(TaskHandle::State::Failed, cancelledByItself.state()) << "nobody had asked it to stop";
}

TEST(Schedulers, ATaskMayWaitForTasksItHasAddedEvenOnOneWorker)
{
    VoParallelTaskScheduler scheduler(1);
    std::vector<int> order;
    const TaskHandle outer = scheduler.add(Task([&](FunctionTask&, const VoStopFlag&) {
        const TaskHandle inner = scheduler.add(Task([&](FunctionTask&, const VoStopFlag&) {
            scheduler.add(Task([&](FunctionTask&, const VoStopFlag&) { order.push_back(1); })).result();
            order.push_back(2);
        }));
        inner.result();
        order.push_back(3);
    }));
    outer.result();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), order);
}

TEST(Schedulers, RefuseToEndThemselvesAndNothing)
{
    VoParallelTaskScheduler scheduler(2);
    EXPECT_THROW_MSG(scheduler.add([&] { scheduler.finish(); }).get(), VoInvalidCallException,
                     "Scheduler cannot wait for itself");
    EXPECT_THROW_MSG(scheduler.add(VoSharedPtr<AbstractTask>()), VoNullPointerException, "Null task");
}

TEST(Schedulers, QueueWorkOfAnySizeInOrderAndDropWhatIsLeftOfManyBatches)
{
    const auto held = std::make_shared<int>();
    std::vector<std::size_t> order;
    std::vector<std::future<std::size_t>> results;
    VoSerialTaskScheduler scheduler;
    Blocker blocker;
    scheduler.start(std::ref(blocker));
    blocker.entered.get_future().wait();
    constexpr std::size_t count = 2000;
    for (std::size_t i = 0; i < count; i += 4) {
        scheduler.start([&, i] { order.push_back(i); });
        scheduler.start([&, large = std::array<std::size_t, 50>{i}] { order.push_back(large[0] + 1); });
        struct alignas(64) Aligned
        {
            std::size_t value;
        };
        scheduler.start([&, aligned = Aligned{i + 2}] {
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(&aligned) % alignof(Aligned));
            order.push_back(aligned.value);
        });
        results.push_back(scheduler.add([&, single = std::make_unique<std::size_t>(i + 3)] {
            order.push_back(*single);
            return *single;
        }));
    }
    blocker.release.set_value();
    for (std::size_t i = 0; i < results.size(); ++i)
        ASSERT_EQ(4 * i + 3, results[i].get());
    std::vector<std::size_t> expected(count);
    std::iota(expected.begin(), expected.end(), std::size_t{0});
    EXPECT_EQ(expected, order);

    std::promise<void> entered;
    scheduler.add(Task([&](FunctionTask&, const VoStopFlag& stop) {
        entered.set_value();
        while (!stop.isStopped())
            std::this_thread::yield();
    }));
    entered.get_future().wait();
    std::vector<TaskHandle> tasks;
    for (std::size_t i = 0; i < count; ++i) {
        scheduler.start([held] { ADD_FAILURE(); });
        tasks.push_back(scheduler.add(Task([held](FunctionTask&, const VoStopFlag&) { ADD_FAILURE(); })));
    }
    scheduler.terminate();
    EXPECT_EQ(1, held.use_count());
    for (const TaskHandle& task : tasks)
        ASSERT_EQ(TaskHandle::State::Cancelled, task.state());
}

TEST(ParallelScheduler, TerminatingStopsWhatItDoesNotCancelWheneverItComes)
{
    VoParallelTaskScheduler scheduler(3);
    for (int round = 0; round < 200; ++round) {
        // Each runs until it is stopped: one that terminate() overlooks would keep it waiting for ever.
        std::vector<TaskHandle> tasks;
        for (int i = 0; i < 6; ++i)
            tasks.push_back(scheduler.add(Task([](FunctionTask&, const VoStopFlag& stop) {
                while (!stop.isStopped())
                    std::this_thread::yield();
            })));
        scheduler.terminate();
        for (const TaskHandle& task : tasks)
            EXPECT_NE(TaskHandle::State::Waiting, task.state());
    }
}

TEST(Schedulers, ATaskMayDestroyItsOwnScheduler)
{
    for (int round = 0; round < 100; ++round) {
        auto scheduler = std::make_unique<VoParallelTaskScheduler>(2);
        const auto gone = std::make_shared<std::promise<void>>();
        VoParallelTaskScheduler* const running = scheduler.get();
        std::promise<void> added;
        running->start([&, gone] {
            added.get_future().wait();
            scheduler.reset();
            gone->set_value();
        });
        const TaskHandle other = running->add(Task([&](FunctionTask&, const VoStopFlag& stop) {
            while (!stop.isStopped())
                std::this_thread::yield();
        }));
        added.set_value();
        gone->get_future().wait();
        other.wait();
    }
}

TEST(ParallelScheduler, ParallelForCoversEveryIndexOnceWhateverTheGrain)
{
    VoParallelTaskScheduler scheduler(3);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{1000}})
        for (const std::size_t grain : {std::size_t{0}, std::size_t{1}, std::size_t{3}, std::size_t{2000}}) {
            std::vector<std::atomic<int>> seen(size);
            scheduler.parallelFor(5, 5 + size, grain, [&](std::size_t first, std::size_t last) {
                EXPECT_LT(first, last);
                for (std::size_t i = first; i < last; ++i)
                    ++seen[i - 5];
            });
            for (const std::atomic<int>& count : seen)
                ASSERT_EQ(1, count) << size << " by " << grain;
        }
}

TEST(ParallelScheduler, ParallelForRunsPiecesAtTheSameTime)
{
    VoParallelTaskScheduler scheduler(2);
    std::array<std::promise<void>, 2> begun;
    scheduler.parallelFor(0, 2, 1, [&](std::size_t piece, std::size_t) {
        begun[piece].set_value();
        EXPECT_EQ(begun[1 - piece].get_future().wait_for(std::chrono::minutes(1)), std::future_status::ready);
    });
}

TEST(ParallelScheduler, ParallelForNestsWithoutDeadlock)
{
    VoParallelTaskScheduler scheduler(2);
    std::atomic<int> sum{0};
    scheduler.parallelFor(0, 8, 1, [&](std::size_t, std::size_t) {
        scheduler.parallelFor(0, 10, 2,
                              [&](std::size_t first, std::size_t last) { sum += static_cast<int>(last - first); });
    });
    EXPECT_EQ(80, sum);
}

TEST(ParallelScheduler, ParallelForThrowsTheFirstFailureAfterAllHaveReturned)
{
    const vo::test::LogCapture log;
    VoParallelTaskScheduler scheduler(2);
    std::atomic<int> active{0}, calls{0};
    const auto piece = [&](std::size_t, std::size_t) {
        ++active;
        ++calls;
        --active;
        throw VoInvalidCallException("piece");
    };
    EXPECT_THROW_MSG(scheduler.parallelFor(0, 100000, 1, piece), VoInvalidCallException, "piece");
    EXPECT_EQ(0, active);
    EXPECT_LE(calls, 3) << "at most one piece a thread after the first failure";
    EXPECT_EQ(static_cast<std::size_t>(calls - 1), log.texts("tasks").size()) << "the other failures are logged";
}

TEST(ParallelScheduler, NoWorkerSleepsWhileThereIsWorkForIt)
{
    constexpr int workers = 3;
    VoParallelTaskScheduler scheduler(workers);
    for (int round = 0; round < 300; ++round) {
        // All must be at it at the same time, else none goes on.
        std::atomic<int> present{0};
        std::vector<std::future<void>> all;
        for (int i = 0; i < workers; ++i)
            all.push_back(scheduler.add([&] {
                ++present;
                while (present < workers)
                    std::this_thread::yield();
            }));
        for (std::future<void>& each : all)
            each.get();
        scheduler.add([] {}).get(); // others fall asleep meanwhile
    }
}

TEST(ParallelScheduler, SurvivesManyThreadsAddingWaitingAndStopping)
{
    std::atomic<int> ran{0};
    {
        VoParallelTaskScheduler scheduler(4);
        vo::test::Threads(4, [&] {
            for (int i = 0; i < 300; ++i) {
                const TaskHandle handle = scheduler.add(Task([&](FunctionTask&, const VoStopFlag&) { ++ran; }));
                if (i % 3 == 0)
                    handle.stop();
                else if (i % 3 == 1)
                    handle.wait();
            }
        });
        scheduler.finish();
        EXPECT_GE(ran, 800) << "only stopped tasks may be left out";
        for (int i = 0; i < 1000; ++i)
            scheduler.add([&] { ++ran; });
    } // terminates with work queued
    SUCCEED();
}
