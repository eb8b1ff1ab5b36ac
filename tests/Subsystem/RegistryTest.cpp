#include <Subsystem/Registry.h>

#include <LogCapture.h>
#include <VoTestSupport.h>

#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

using vo::subsystem::Definition;
using vo::subsystem::Registry;
using vo::subsystem::Running;

namespace {

// Subsystems whose names are letters, and what happened to them: "+a" started, "-a" stopped.
class Fixture : public testing::Test
{
protected:
    void add(const char* name, VoDeque<VoString> needs = {}, std::function<void()> within = {},
             std::function<void()> withinStop = {})
    {
        registry.add({name, std::move(needs),
                      [this, name, within] {
                          note('+', name);
                          if (within)
                              within();
                      },
                      [this, name, withinStop] {
                          note('-', name);
                          if (withinStop)
                              withinStop();
                      }});
    }

    void note(char sign, const std::string& name)
    {
        const std::lock_guard lock(m_mutex);
        m_events += (m_events.empty() ? "" : " ") + (sign + name);
    }

    std::string taken()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_events, {});
    }

    Registry registry;

private:
    std::mutex m_mutex;
    std::string m_events;
};

using SubsystemRegistry = Fixture;

void Fail()
{
    throw VoInvalidUseException("broken");
}

} // namespace

TEST_F(SubsystemRegistry, StartsNeedsFirstCountsAndStopsInReverse)
{
    add("app", {"net", "LOG"});
    add("net", {"log"});
    add("log");
    registry.start("app");
    EXPECT_EQ(taken(), "+log +net +app");
    registry.start("App");
    registry.start("net");
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(registry.running(), (VoDeque<VoString>{"log", "net", "app"}));
    registry.stop("app");
    EXPECT_EQ(taken(), "");
    registry.stop("app");
    EXPECT_EQ(taken(), "-app"); // somebody has started "net"
    {
        const Running again(registry, "app");
        EXPECT_EQ(taken(), "+app");
        registry.stop("net");
    }
    EXPECT_EQ(taken(), "-app -net -log");
    EXPECT_THROW_MSG(registry.stop("net"), VoInvalidCallException, "Subsystem is not started: net");
}

TEST_F(SubsystemRegistry, WhatCannotBeStartedIsToldByNameBeforeAnythingStarts)
{
    add("a", {"b"});
    add("b", {"c"});
    add("c", {"b"});
    add("d", {"ok", "nobody"});
    add("ok");
    EXPECT_THROW_MSG(registry.start("a"), VoInvalidCallException, "Subsystems need each other: b, c, b");
    EXPECT_THROW_MSG(registry.start("d"), VoNotFoundException, "Item not found: Subsystem nobody");
    EXPECT_THROW_MSG(registry.start("e"), VoNotFoundException, "Item not found: Subsystem e");
    EXPECT_THROW_MSG(registry.add({"OK"}), VoInvalidCallException, "Subsystem already known: OK");
    EXPECT_THROW_MSG(registry.add({""}), VoInvalidParameterException, "Subsystem without a name");
    EXPECT_EQ(taken(), "");
}

TEST_F(SubsystemRegistry, AFailedStartStopsWhatWasStartedForItAndNoMore)
{
    add("kept");
    add("log", {"kept"});
    add("late");
    add("net", {"log"}, [this] {
        registry.start("late"); // needed by net from now on
        Fail();
    });
    add("app", {"net"});
    registry.start("kept");
    EXPECT_THROW_MSG(registry.start("app"), VoInvalidUseException, "broken");
    EXPECT_EQ(taken(), "+kept +log +net +late -late -log");
    EXPECT_EQ(registry.running(), (VoDeque<VoString>{"kept"}));
}

TEST_F(SubsystemRegistry, EveryStopHappensWhateverAnotherThrows)
{
    const vo::test::LogCapture log;
    add("log");
    add("net", {"log"}, {}, Fail);
    add("app", {"net"}, [this] { registry.start("late"); });
    add("late");
    registry.start("app");
    const Running more(registry, "log");
    registry.start("net");
    registry.stopAll();
    EXPECT_EQ(taken(), "+log +net +app +late -app -late -net -log");
    EXPECT_EQ(log.texts("subsystem"), (std::vector<std::string>{"Subsystem net failed to stop (broken)"}));
    registry.start("log"); // a new run, which "more" does not end
    EXPECT_EQ(taken(), "+log");
}

TEST_F(SubsystemRegistry, AskingForWhatWaitsForTheAskerThrowsInsteadOfWaiting)
{
    add("a", {}, [this] { registry.start("b"); });
    add("b", {}, [this] { registry.start("a"); });
    add("self", {}, [this] { registry.start("self"); });
    EXPECT_THROW_MSG(registry.start("a"), VoInvalidCallException, "Subsystems need each other: b, a, b");
    EXPECT_THROW_MSG(registry.start("self"), VoInvalidCallException, "Subsystems need each other: self, self");

    std::promise<void> xIsStarting, yIsStarting;
    add("x", {}, [&] {
        xIsStarting.set_value();
        yIsStarting.get_future().wait();
        registry.start("y");
    });
    add("y", {}, [&] {
        yIsStarting.set_value();
        xIsStarting.get_future().wait();
        registry.start("x");
    });
    std::atomic<int> refused{0};
    const auto start = [&](const char* name) {
        try {
            registry.start(name);
        } catch (const VoInvalidCallException&) {
            ++refused;
        } catch (const std::future_error&) {
            // Tried anew after the other's failure: the promises are used up.
        }
    };
    std::thread other([&] { start("x"); });
    start("y");
    other.join();
    EXPECT_GE(refused, 1);
}

TEST_F(SubsystemRegistry, ThreadsThatStartTheSameWaitForTheFirst)
{
    std::atomic<bool> isUp{false};
    std::promise<void> othersRun;
    const std::shared_future<void> run = othersRun.get_future().share();
    add("slow", {}, [&] {
        run.wait();
        isUp = true;
    });
    add("user", {"slow"});
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            if (++ready == 4)
                othersRun.set_value();
            const Running running(registry, t % 2 ? "slow" : "user");
            EXPECT_TRUE(isUp);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(registry.running().isEmpty());
}

// Random subsystems, started and stopped by several threads, some of which fail: whenever one starts, runs or stops,
// what it needs is running, and every start has its stop.
TEST(SubsystemRegistryProperty, NeedsRunAsLongAsTheirUsersAndEveryStartHasItsStop)
{
    const vo::test::LogCapture log;
    constexpr int Count = 8;
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Registry registry;
        std::atomic<int> up[Count] = {};
        for (int i = 0; i < Count; ++i) {
            std::vector<int> needs;
            VoDeque<VoString> names;
            for (int j = 0; j < i; ++j) {
                if (random() % 3 == 0) {
                    needs.push_back(j);
                    names.push_back("s" + VoString(j));
                }
            }
            const auto needsAreUp = [&up, needs] {
                for (const int need : needs)
                    EXPECT_EQ(up[need], 1);
            };
            const bool breaks = random() % 5 == 0;
            const int extra = i > 0 && random() % 3 == 0 ? static_cast<int>(random() % static_cast<unsigned>(i)) : -1;
            auto starts = std::make_shared<std::atomic<int>>(0);
            registry.add({"s" + VoString(i), names,
                          [&, i, needsAreUp, breaks, extra, starts] {
                              needsAreUp();
                              if (extra >= 0)
                                  registry.start("s" + VoString(extra));
                              if (breaks && ++*starts % 2 == 0)
                                  Fail();
                              EXPECT_EQ(++up[i], 1);
                          },
                          [&up, i, needsAreUp, breaks] {
                              needsAreUp();
                              EXPECT_EQ(--up[i], 0);
                              if (breaks)
                                  Fail();
                          }});
        }
        std::vector<std::thread> threads;
        for (unsigned t = 0; t < 3; ++t) {
            threads.emplace_back([&, t] {
                std::mt19937 own(seed * 10 + t);
                std::vector<std::unique_ptr<Running>> held;
                for (int step = 0; step < 60; ++step) {
                    const int which = static_cast<int>(own() % Count);
                    try {
                        held.push_back(std::make_unique<Running>(registry, "s" + VoString(which)));
                        EXPECT_EQ(up[which], 1);
                    } catch (const VoInvalidUseException&) {
                    }
                    if (!held.empty() && own() % 2 == 0)
                        held.erase(held.begin() + static_cast<std::ptrdiff_t>(own() % held.size()));
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_TRUE(registry.running().isEmpty());
        for (const std::atomic<int>& state : up)
            EXPECT_EQ(state, 0);
    }
}
