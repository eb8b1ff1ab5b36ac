#include <Threading/VoBroadcaster.h>

#include <Core/VoUUID.h>

#include <RunningCallback.h>
#include <VoTestSupport.h>

namespace {

using Broadcaster = VoBroadcaster<const std::string&>;

} // namespace

TEST(VoBroadcaster, CallsEveryConnectionOnceInTheOrderOfIdentifiers)
{
    Broadcaster broadcaster;
    std::vector<std::string> called;
    std::vector<VoReceiver> receivers;
    std::vector<std::string> expected;
    for (int i = 0; i < 50; ++i) {
        receivers.push_back(broadcaster.connect([&called, i, &receivers](const std::string& text) {
            called.push_back(receivers[static_cast<std::size_t>(i)].id().toString().toStdString() + text);
        }));
        expected.push_back(receivers.back().id().toString().toStdString() + "!");
    }
    std::sort(expected.begin(), expected.end());
    broadcaster.broadcast("!");
    EXPECT_EQ(called, expected);
}

TEST(VoBroadcaster, ACallbackEndsWithItsReceiver)
{
    Broadcaster broadcaster;
    EXPECT_THROW_MSG(broadcaster.connect(nullptr), VoInvalidParameterException, "Invalid callback");
    EXPECT_TRUE(!VoReceiver().isReceiving() && VoReceiver().id() == VoUUID(""));
    broadcaster.broadcast("nobody");
    int calls = 0;
    {
        const VoReceiver receiver = broadcaster.connect([&](const std::string&) { ++calls; });
        EXPECT_TRUE(receiver.isReceiving());
        EXPECT_TRUE(broadcaster.isConnected(receiver.id()));
        broadcaster.broadcast("1");
    }
    broadcaster.broadcast("2");
    static_cast<void>(broadcaster.connect([&](const std::string&) { ++calls; })); // dropped at once
    broadcaster.broadcast("3");
    EXPECT_EQ(calls, 1);
}

TEST(VoBroadcaster, AnExceptionOfACallbackSkipsTheRestAndLeavesTheBroadcasterUsable)
{
    Broadcaster broadcaster;
    int calls = 0;
    bool failing = true;
    std::vector<VoReceiver> receivers;
    for (int i = 0; i < 3; ++i) {
        receivers.push_back(broadcaster.connect([&](const std::string&) {
            ++calls;
            if (failing)
                throw VoInvalidUseException("stop here");
        }));
    }
    EXPECT_THROW_MSG(broadcaster.broadcast("1"), VoInvalidUseException, "stop here");
    EXPECT_EQ(calls, 1);
    failing = false;
    broadcaster.broadcast("2");
    EXPECT_EQ(calls, 4);
}

TEST(VoReceiver, MayOutliveItsBroadcaster)
{
    VoReceiver receiver;
    {
        Broadcaster broadcaster;
        receiver = broadcaster.connect([](const std::string&) {});
        EXPECT_TRUE(receiver.isReceiving());
    }
    EXPECT_FALSE(receiver.isReceiving());
}

TEST(VoReceiver, MovingSwapsTheConnections)
{
    Broadcaster broadcaster;
    std::string called;
    VoReceiver a = broadcaster.connect([&](const std::string&) { called += 'a'; });
    const VoUUID id = a.id();
    {
        VoReceiver b = std::move(a);
        EXPECT_EQ(b.id(), id);
        broadcaster.broadcast("1");
        a = std::move(b);
    } // what b got back, nothing, is destroyed
    broadcaster.broadcast("2");
    EXPECT_EQ(called, "aa");

    VoReceiver c = broadcaster.connect([&](const std::string&) { called += 'c'; });
    a = std::move(c); // c keeps a's connection alive
    called.clear();
    broadcaster.broadcast("3");
    std::sort(called.begin(), called.end());
    EXPECT_EQ(called, "ac");
    c = VoReceiver(); // the temporary takes it along
    called.clear();
    broadcaster.broadcast("4");
    EXPECT_EQ(called, "c");
}

// Callbacks that do what they had better not.

TEST(VoBroadcasterFromWithin, ACallbackMayDropItsOwnReceiver)
{
    Broadcaster broadcaster;
    const auto alive = std::make_shared<int>(0);
    int calls = 0;
    VoReceiver receiver;
    receiver = broadcaster.connect([&, captured = alive](const std::string&) {
        receiver = VoReceiver();
        EXPECT_EQ(captured.use_count(), 2); // the running function is still whole
        ++calls;
    });
    broadcaster.broadcast("1");
    EXPECT_EQ(alive.use_count(), 1);
    broadcaster.broadcast("2");
    EXPECT_EQ(calls, 1);
}

TEST(VoBroadcasterFromWithin, TheFirstCalledMayDropAllOthers)
{
    Broadcaster broadcaster;
    std::map<int, VoReceiver> receivers;
    int calls = 0;
    for (int i = 0; i < 10; ++i) {
        receivers[i] = broadcaster.connect([&, i](const std::string&) {
            ++calls;
            for (auto& [key, receiver] : receivers) {
                if (key != i)
                    receiver = VoReceiver();
            }
        });
    }
    broadcaster.broadcast("1");
    EXPECT_EQ(calls, 1);
    broadcaster.broadcast("2");
    EXPECT_EQ(calls, 2);
}

TEST(VoBroadcasterFromWithin, WhatIsConnectedIsCalledFromTheNextBroadcastOn)
{
    Broadcaster broadcaster;
    std::vector<VoReceiver> late;
    int calls = 0;
    const VoReceiver receiver = broadcaster.connect([&](const std::string&) {
        for (int i = 0; i < 20; ++i) {
            late.push_back(broadcaster.connect([&](const std::string&) { ++calls; }));
            EXPECT_TRUE(late.back().isReceiving());
        }
        late.pop_back(); // connected and dropped within the same broadcast
    });
    broadcaster.broadcast("1");
    EXPECT_EQ(calls, 0);
    broadcaster.broadcast("2");
    EXPECT_EQ(calls, 19);
}

TEST(VoBroadcasterFromWithin, ABroadcastIsRefused)
{
    Broadcaster broadcaster;
    int refused = 0;
    const VoReceiver receiver = broadcaster.connect([&](const std::string&) {
        EXPECT_THROW_MSG(broadcaster.broadcast("2"), VoInvalidCallException,
                         "Broadcast called from within a broadcast");
        ++refused;
    });
    broadcaster.broadcast("1");
    broadcaster.broadcast("3");
    EXPECT_EQ(refused, 2);
}

TEST(VoBroadcasterFromWithin, AChainOfReceiversHeldByCallbacksGoesWithTheFirst)
{
    Broadcaster broadcaster;
    int calls = 0;
    VoReceiver chain;
    for (int i = 0; i < 100; ++i) {
        auto held = std::make_shared<VoReceiver>(std::move(chain));
        chain = broadcaster.connect([&calls, held](const std::string&) { ++calls; });
    }
    broadcaster.broadcast("1");
    chain = VoReceiver();
    broadcaster.broadcast("2");
    EXPECT_EQ(calls, 100);
}

TEST(VoBroadcasterFromWithin, TheLastReceiverMayTakeTheBroadcasterAlong)
{
    auto broadcaster = std::make_shared<Broadcaster>();
    VoReceiver receiver = broadcaster->connect([broadcaster](const std::string&) {});
    const std::weak_ptr<Broadcaster> watch = broadcaster;
    broadcaster.reset();
    receiver = VoReceiver();
    EXPECT_TRUE(watch.expired());
}

// Several threads.

TEST(VoBroadcasterThreads, DisconnectingWaitsForTheRunningCallback)
{
    Broadcaster broadcaster;
    vo::test::ExpectEndWaitsForCallback(
        [&](const auto& callback) { return broadcaster.connect([callback](const std::string&) { callback(); }); },
        [&] { broadcaster.broadcast("1"); });
}

TEST(VoBroadcasterThreads, ReceiversComeAndGoWhileOthersBroadcast)
{
    Broadcaster broadcaster;
    std::atomic<bool> done{false};
    vo::test::Threads threads(2, [&] {
        while (!done)
            broadcaster.broadcast("news");
    });
    vo::test::Threads(3, [&] {
        for (int i = 0; i < 300; ++i) {
            auto calls = std::make_unique<int>(0); // gone with the scope: a late call would touch freed memory
            VoReceiver receiver =
                broadcaster.connect([&calls](const std::string& text) { *calls += static_cast<int>(text.size()); });
            EXPECT_TRUE(receiver.isReceiving());
            receiver = VoReceiver();
            calls.reset();
        }
    });
    done = true;
    threads.join();
}

TEST(VoBroadcasterThreads, EitherSideMayBeDestroyedFirstOnAnyThread)
{
    for (int round = 0; round < 500; ++round) {
        auto broadcaster = std::make_unique<Broadcaster>();
        std::vector<VoReceiver> receivers;
        for (int i = 0; i < 4; ++i)
            receivers.push_back(broadcaster->connect([](const std::string&) {}));
        std::atomic<int> ready{0};
        const auto meet = [&ready] {
            ++ready;
            while (ready < 3)
                std::this_thread::yield();
        };
        std::thread dropper([&] {
            meet();
            receivers.clear();
        });
        std::thread asker([&, receiver = broadcaster->connect([](const std::string&) {})] {
            meet();
            static_cast<void>(receiver.isReceiving());
        });
        meet();
        broadcaster.reset();
        dropper.join();
        asker.join();
    }
}
