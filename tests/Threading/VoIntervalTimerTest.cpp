#include <VoTestSupport.h>

#include <LogCapture.h>
#include <RunningCallback.h>

#include <Threading/VoEventLoop.h>
#include <Threading/VoIntervalTimer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>

namespace {

using Ticks = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

/// A clock that stands still, and a timer that writes down its ticks.
struct Recorder
{
    std::shared_ptr<VoManualClock> clock = std::make_shared<VoManualClock>();
    Ticks ticks;
    std::vector<std::int64_t> instants; // in seconds
    std::function<void()> then = [] {};
    VoIntervalTimer timer = VoIntervalTimer(
        [this](const VoIntervalTimer::Tick& tick) {
            ticks.emplace_back(tick.number, tick.missed);
            instants.push_back(clock->now().count() / 1000000000);
            then();
        },
        clock);
};

} // namespace

TEST(VoIntervalTimer, CallsAtStartAndPeriodsHoweverLateTheCallBeforeWas)
{
    Recorder a;
    a.then = [&] {
        if (a.ticks.size() == 2)
            a.clock->jump(VoSeconds(4)); // a callback that takes its time
    };
    a.timer.start(VoSeconds(10));
    a.clock->advance(VoSeconds(31));
    EXPECT_EQ(a.instants, (std::vector<std::int64_t>{10, 20, 30}));
    a.clock->jump(VoSeconds(30)); // the machine slept
    a.clock->advance(VoSeconds(10));
    EXPECT_EQ(a.ticks, (Ticks{{1, 0}, {2, 0}, {3, 0}, {6, 2}, {7, 0}}));
    EXPECT_TRUE(a.timer.isActive());
}

TEST(VoIntervalTimer, IsStartedAnewAndCancelledAlsoFromItsCallback)
{
    Recorder a;
    a.timer.startOnce(VoSeconds(5));
    a.clock->advance(VoSeconds(4));
    a.timer.startOnce(VoSeconds(5)); // puts it off
    a.clock->advance(VoSeconds(4));
    EXPECT_TRUE(a.ticks.empty());
    a.then = [&] { a.timer.start(VoSeconds(2)); };
    a.clock->advance(VoSeconds(1));
    a.then = [&] { a.timer.cancel(); };
    a.clock->advance(VoSeconds(20));
    EXPECT_EQ(a.instants, (std::vector<std::int64_t>{9, 11}));
    EXPECT_FALSE(a.timer.isActive());

    a.timer.startOnce(VoTimeDuration::Max());
    a.clock->advance(VoHours(1000000));
    EXPECT_TRUE(a.timer.isActive());
    a.timer.startOnce(VoSeconds(-1));
    a.clock->advance(VoTimeDuration());
    EXPECT_EQ(a.ticks.size(), 3u);

    EXPECT_THROW_MSG(a.timer.start(VoTimeDuration()), VoInvalidParameterException, "Invalid timer period");
    EXPECT_THROW_MSG(VoIntervalTimer(nullptr), VoInvalidParameterException, "Invalid callback");
}

TEST(VoIntervalTimer, MayEndInItsCallbackAndLogsWhatThatThrows)
{
    const vo::test::LogCapture log;
    const auto clock = std::make_shared<VoManualClock>();
    std::optional<VoIntervalTimer> timer;
    int calls = 0;
    timer.emplace(
        [&](const VoIntervalTimer::Tick&) {
            if (++calls == 2)
                timer.reset();
            throw VoInvalidUseException("no");
        },
        clock);
    timer->start(VoSeconds(1));
    clock->advance(VoSeconds(5));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(log.texts("timers"), std::vector<std::string>(2, "Exception in timer callback: no"));
}

TEST(VoIntervalTimer, OnALoopOneCallStandsForAllThatWereDueMeanwhile)
{
    const auto clock = std::make_shared<VoManualClock>();
    VoEventLoop loop;
    Ticks ticks;
    std::thread::id thread;
    VoIntervalTimer timer(
        loop,
        [&](const VoIntervalTimer::Tick& tick) {
            ticks.emplace_back(tick.number, tick.missed);
            thread = std::this_thread::get_id();
        },
        clock);
    timer.start(VoSeconds(1));
    clock->advance(VoSeconds(3)); // the loop does not run yet
    loop.run();
    loop.finish();
    clock->advance(VoSeconds(1));
    timer.cancel();
    loop.run();
    loop.finish();
    EXPECT_EQ(ticks, (Ticks{{3, 2}}));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(VoIntervalTimer, OnTheFrameworksLoopCallsComeOnTheThreadThatMadeIt)
{
    int count = 0;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    std::optional<QCoreApplication> application;
    if (!QCoreApplication::instance())
        application.emplace(count, arguments);
    QEventLoop loop;
    int calls = 0;
    std::thread::id thread;
    VoIntervalTimer timer = VoIntervalTimer::OnFrameworkLoop([&](const VoIntervalTimer::Tick&) {
        thread = std::this_thread::get_id();
        if (++calls == 3)
            loop.quit();
    });
    timer.start(VoMilliseconds(1));
    loop.exec();
    timer.cancel();
    QCoreApplication::processEvents();
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(VoIntervalTimer, EndingWaitsForTheCallbackThatRuns)
{
    vo::test::ExpectEndWaitsForCallback(
        [](const auto& callback) {
            auto timer = std::make_unique<VoIntervalTimer>([callback](const VoIntervalTimer::Tick&) { callback(); });
            timer->startOnce(VoTimeDuration());
            return timer;
        },
        [] {});
}

// Nothing is called after its timer has ended, whatever the threads are at.
TEST(VoIntervalTimer, TimersComeAndGoOnManyThreadsWhileTheyFire)
{
    VoEventLoop loop;
    loop.run();
    vo::test::Threads(4, [&loop](int t) {
        for (int i = 0; i < 200; ++i) {
            auto calls = std::make_unique<std::atomic<int>>(0); // a late call would touch freed memory
            const auto callback = [&calls](const VoIntervalTimer::Tick&) { ++*calls; };
            VoIntervalTimer timer = t % 2 ? VoIntervalTimer(callback) : VoIntervalTimer(loop, callback);
            timer.start(VoMicroseconds(20));
            while (i % 2 && *calls == 0)
                std::this_thread::yield();
            if (i % 3 == 0)
                timer.startOnce(VoTimeDuration());
            timer = VoIntervalTimer(callback);
            calls.reset();
        }
    });
    loop.terminate();
}
