#include <Threading/VoStopFlag.h>

#include <Threading/VoReceiver.h>
#include <Time/VoTimeDuration.h>

#include <LogCapture.h>
#include <RunningCallback.h>
#include <VoTestSupport.h>

#include <future>

TEST(VoStopFlag, CopiesShareOneFlag)
{
    const VoStopFlag flag;
    const VoStopFlag copy = flag;
    const VoStopFlag other;
    EXPECT_FALSE(copy.isStopped());
    EXPECT_NO_THROW(flag.throwIfStopped());
    flag.stop();
    EXPECT_TRUE(copy.isStopped());
    EXPECT_FALSE(other.isStopped());
    EXPECT_THROW_MSG(copy.throwIfStopped(), VoUserCancelledException, "User cancelled");
}

TEST(VoStopFlag, CallbacksRunOnceAndAtOnceOnARaisedFlag)
{
    const VoStopFlag flag;
    int before = 0;
    int after = 0;
    int dropped = 0;
    const VoReceiver receiver = flag.onStop([&] {
        EXPECT_TRUE(flag.isStopped());
        ++before;
    });
    static_cast<void>(flag.onStop([&] { ++dropped; }));
    flag.stop();
    flag.stop();
    const VoReceiver late = flag.onStop([&] { ++after; });
    EXPECT_EQ(before, 1);
    EXPECT_EQ(after, 1);
    EXPECT_EQ(dropped, 0);
    EXPECT_FALSE(late.isReceiving());
    EXPECT_THROW_MSG(flag.onStop(nullptr), VoInvalidParameterException, "Invalid callback");
}

TEST(VoStopFlag, ACallbackMayTouchTheFlagAndItsOwnReceiver)
{
    VoStopFlag flag;
    int calls = 0;
    VoReceiver receiver;
    VoReceiver nested;
    receiver = flag.onStop([&] {
        receiver = VoReceiver();
        flag.stop();
        nested = flag.onStop([&] { ++calls; });
        flag = VoStopFlag(); // the last handle of the old flag
    });
    flag.stop();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(flag.isStopped());
}

TEST(VoStopFlag, ExceptionsOfCallbacksAreLoggedAndStopNothing)
{
    const vo::test::LogCapture log;
    const VoStopFlag flag;
    int calls = 0;
    const VoReceiver first = flag.onStop([] { throw VoInvalidUseException("no"); });
    const VoReceiver second = flag.onStop([&] { ++calls; });
    flag.stop();
    static_cast<void>(flag.onStop([] { throw 5; }));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(log.texts("threads"), (std::vector<std::string>{"Exception in stop callback: no",
                                                              "Exception in stop callback: Unknown exception"}));
}

TEST(VoStopFlag, ChildrenAreRaisedByTheirParentAndNotTheReverse)
{
    const VoStopFlag parent;
    const VoStopFlag first = parent.child();
    const VoStopFlag second = parent.child();
    for (int i = 0; i < 1000; ++i)
        parent.child();                                                     // short lives that disturb nobody
    const VoStopFlag grandchild = [&] { return second.child().child(); }(); // the one between is held by nobody
    first.stop();
    EXPECT_TRUE(first.isStopped());
    EXPECT_FALSE(parent.isStopped());
    EXPECT_FALSE(second.isStopped());
    parent.stop();
    EXPECT_TRUE(second.isStopped());
    EXPECT_TRUE(grandchild.isStopped());
    EXPECT_TRUE(parent.child().isStopped());
}

TEST(VoStopFlag, WaitingEndsWithTheFlagOrTheTime)
{
    const VoStopFlag flag;
    EXPECT_FALSE(flag.waitFor(VoMilliseconds(1)));
    EXPECT_FALSE(flag.waitFor(VoSeconds(-1)));
    std::promise<void> waiting;
    std::thread waiter([&] {
        waiting.set_value();
        EXPECT_TRUE(flag.waitFor(VoTimeDuration::Max()));
    });
    waiting.get_future().wait();
    flag.stop();
    waiter.join();
    EXPECT_TRUE(flag.waitFor(VoTimeDuration()));
}

TEST(VoStopFlag, WithdrawingACallbackWaitsForItOnAnotherThread)
{
    const VoStopFlag flag;
    vo::test::ExpectEndWaitsForCallback([&](const auto& callback) { return flag.onStop(callback); },
                                        [&] { flag.stop(); });
}

TEST(VoStopFlag, EveryCallbackOfARaceIsCalledExactlyOnceUnlessWithdrawn)
{
    for (int round = 0; round < 200; ++round) {
        const VoStopFlag flag;
        std::atomic<int> calls{0};
        vo::test::Threads threads(3, [&] {
            const VoStopFlag child = flag.child();
            auto counted = std::make_unique<std::atomic<int>*>(&calls);
            const VoReceiver receiver = child.onStop([&counted] { ++**counted; });
            while (!child.isStopped())
                std::this_thread::yield();
            child.waitFor(VoTimeDuration::Max());
            flag.stop(); // may come before the raising thread has called back
        });
        flag.stop();
        threads.join();
        EXPECT_LE(calls, 3);
    }
}
