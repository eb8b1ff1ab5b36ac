#include <VoTestSupport.h>

#include <LogCapture.h>

#include <Threading/VoEventLoop.h>
#include <Threading/VoStoppableEvent.h>

#include <future>

namespace {

/// Something to wait for, opened once.
class Gate
{
public:
    void open() { m_promise.set_value(); }
    void wait() { m_future.wait(); }

private:
    std::promise<void> m_promise;
    std::shared_future<void> m_future = m_promise.get_future().share();
};

class Call : public VoEvent
{
public:
    explicit Call(std::function<void()> function, std::int32_t type = 1)
        : VoEvent(type)
        , m_function(std::move(function))
    {
    }

private:
    void run() override { m_function(); }
    std::function<void()> m_function;
};

VoSharedPtr<VoEvent> MakeCall(std::function<void()> function)
{
    return VoSharedPtr<VoEvent>(new Call(std::move(function)));
}

/// Adds up in one event what several were told.
class Sum : public VoEvent
{
public:
    Sum(std::int32_t type, int value, std::vector<int>& results)
        : VoEvent(type)
        , m_value(value)
        , m_results(results)
    {
    }
    bool mergeable() const override { return true; }
    void merge(const VoEvent& other) override
    {
        const int value = static_cast<const Sum&>(other).m_value;
        if (value < 0)
            throw std::runtime_error("negative");
        m_value += value;
    }

private:
    void run() override { m_results.push_back(m_value); }
    int m_value;
    std::vector<int>& m_results;
};

class Stoppable : public VoStoppableEvent
{
public:
    Stoppable()
        : VoStoppableEvent(3)
    {
    }
    Gate executing, stopped;
    int executions = 0;

private:
    void execute() override
    {
        ++executions;
        executing.open();
        stopped.wait();
    }
    void onStop() override { stopped.open(); }
};

} // namespace

TEST(VoEventLoop, FinishRunsWhatIsQueuedInOrderAndTheLoopCanBeStartedAgain)
{
    VoEventLoop loop;
    std::vector<int> order;
    for (int i = 0; i < 3; ++i)
        loop.add(MakeCall([&order, i] { order.push_back(i); }));
    EXPECT_THROW_MSG(loop.add(nullptr), VoNullPointerException, "Null event");
    loop.finish(); // not running: does nothing
    EXPECT_TRUE(order.empty());
    loop.run();
    loop.finish();
    EXPECT_EQ((std::vector<int>{0, 1, 2}), order);

    loop.add(MakeCall([&] { order.push_back(9); }));
    loop.run();
    EXPECT_THROW_MSG(loop.run(), VoInvalidCallException, "Thread already running");
    loop.finish();
    EXPECT_EQ(9, order.back());
}

TEST(VoEventLoop, TerminateLetsTheRunningEventEndAndDiscardsTheOthers)
{
    VoEventLoop loop;
    Gate running, release;
    int later = 0;
    bool ended = false;
    loop.add(MakeCall([&] {
        running.open();
        release.wait();
        ended = true;
    }));
    const VoWeakPtr<VoEvent> discarded = loop.add(MakeCall([&] { ++later; }));
    loop.run();
    running.wait();
    std::thread terminator([&] { loop.terminate(); });
    while (!discarded.expired()) // terminate() clears the queue before it waits
        std::this_thread::yield();
    release.open();
    terminator.join();
    EXPECT_TRUE(ended);
    EXPECT_EQ(0, later);
}

TEST(VoEventLoop, AnEventMayEndItsOwnLoop)
{
    VoEventLoop loop;
    bool after = false;
    loop.add(MakeCall([&] {
        loop.finish();
        EXPECT_THROW_MSG(loop.run(), VoInvalidCallException, "Thread already running");
    }));
    loop.run();
    loop.finish(); // joins, whether the loop ends by its own ABORT or by this one
    loop.add(MakeCall([&] { after = true; }));
    loop.run(); // a left-over ABORT would end this run before the event
    loop.finish();
    EXPECT_TRUE(after);
}

TEST(VoEventLoop, AnEventMayDestroyItsOwnLoop)
{
    for (int round = 0; round < 100; ++round) { // also while run() has not returned yet
        auto loop = std::make_unique<VoEventLoop>();
        const auto gone = std::make_shared<Gate>(); // kept by the event too, which is still running when it opens
        VoWeakPtr<VoEvent> later;
        VoEventLoop* const running = loop.get();
        loop->add(MakeCall([&, gone] {
            later = loop->add(MakeCall([] { ADD_FAILURE() << "ran in a destroyed loop"; }));
            loop.reset();
            gone->open();
        }));
        running->run();
        gone->wait();
        EXPECT_TRUE(later.expired());
    }
}

TEST(VoEventLoop, AnAbortAddedByAnybodyEndsTheLoopWhichMayThenRunAgain)
{
    VoEventLoop loop;
    loop.add(VoSharedPtr<VoEvent>(new VoEvent(VoEvent::ABORT)));
    bool ran = false;
    const VoWeakPtr<VoEvent> second = loop.add(MakeCall([&] { ran = true; }));
    loop.run();
    for (;;) {
        try {
            loop.run(); // refused until the first thread has met the ABORT
            break;
        } catch (const VoInvalidCallException&) {
            std::this_thread::yield();
        }
    }
    loop.finish();
    EXPECT_TRUE(ran) << "what stood behind the ABORT runs in the next run";
}

TEST(VoEventLoop, AFailedEventIsLoggedAndTheNextOneRuns)
{
    const vo::test::LogCapture log;
    VoEventLoop loop;
    bool next = false;
    loop.add(MakeCall([] { throw VoNotFoundException("part"); }));
    loop.add(MakeCall([] { throw std::runtime_error("standard"); }));
    loop.add(MakeCall([] { throw 5; }));
    loop.add(MakeCall([&] { next = true; }));
    loop.run();
    loop.finish();
    EXPECT_TRUE(next);
    EXPECT_EQ((std::vector<std::string>{"Event failed (Item not found: part)", "Event failed (standard)",
                                        "Event failed (Unknown exception)"}),
              log.texts("eventloop"));
}

TEST(VoEventLoop, TheNewestQueuedEventOfTheTypeAbsorbsMergeableOnes)
{
    std::vector<int> results;
    VoEventLoop loop;
    const VoWeakPtr<VoEvent> first = loop.add(VoSharedPtr<VoEvent>(new Sum(1, 1, results)));
    loop.add(VoSharedPtr<VoEvent>(new Sum(2, 10, results)));
    const VoWeakPtr<VoEvent> third = loop.add(VoSharedPtr<VoEvent>(new Sum(1, 2, results)));
    EXPECT_EQ(first.lock(), third.lock()) << "the caller follows the event that does its work";
    EXPECT_THROW(loop.add(VoSharedPtr<VoEvent>(new Sum(1, -1, results))), std::runtime_error);
    loop.run();
    loop.finish();
    EXPECT_EQ((std::vector<int>{3, 10}), results);
    EXPECT_TRUE(first.expired()) << "the loop keeps no event that has run";

    loop.add(VoSharedPtr<VoEvent>(new Sum(1, 5, results)));
    loop.run();
    loop.finish();
    EXPECT_EQ(5, results.back()) << "an event that has run absorbs nothing more";
}

TEST(VoEventLoop, ManyMergeableEventsBehindOthersStayLinear)
{
    std::vector<int> results;
    VoEventLoop loop;
    loop.add(VoSharedPtr<VoEvent>(new Sum(1, 0, results)));
    for (int i = 0; i < 100000; ++i) { // quadratic searching would take minutes here
        loop.add(MakeCall([] {}));
        loop.add(VoSharedPtr<VoEvent>(new Sum(1, 1, results)));
    }
    loop.run();
    loop.finish();
    EXPECT_EQ((std::vector<int>{100000}), results);
}

TEST(VoEventLoop, EventsAddedFromManyThreadsAllRunOnce)
{
    VoEventLoop loop;
    loop.run();
    std::vector<int> counts(4, 0); // written by the loop's thread only
    vo::test::Threads(counts.size(), [&](std::size_t number) {
        for (int i = 0; i < 2000; ++i)
            loop.add(MakeCall([&count = counts[number]] { ++count; }));
    });
    loop.finish();
    EXPECT_EQ(std::vector<int>(4, 2000), counts);
}

TEST(VoStoppableEvent, StoppedBeforeItsTurnNeverRunsAndLaterEndsItsWorkItself)
{
    for (const bool early : {true, false}) {
        const VoSharedPtr<Stoppable> event(new Stoppable);
        VoEventLoop loop;
        loop.add(event);
        if (early)
            event->stop();
        loop.run();
        if (!early) {
            event->executing.wait();
            EXPECT_TRUE(event->isRunning());
            event->stop();
        }
        loop.finish();
        EXPECT_EQ(event->executions, early ? 0 : 1);
        EXPECT_FALSE(event->isRunning());
    }
}

TEST(VoEventLoopDeathTest, AfterShutDownNoLoopRuns)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    // In a process of its own: the others still need their loops.
    EXPECT_EXIT(
        {
            VoEventLoop running;
            bool late = false;
            running.run();
            Gate entered;
            running.add(MakeCall([&] { entered.open(); }));
            entered.wait();
            VoEventLoop::ShutDown();
            VoEventLoop::ShutDown();
            running.add(MakeCall([&] { late = true; }));
            try {
                running.run();
            } catch (const VoInvalidCallException& e) {
                std::_Exit(!late && e.message() == "Event loops have been shut down" ? 7 : 1);
            }
            std::_Exit(2);
        },
        testing::ExitedWithCode(7), "");
}
