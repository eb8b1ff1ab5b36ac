#include <Subsystem/Registry.h>

#include <LogCapture.h>
#include <VoTestSupport.h>

#include <mutex>

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

TEST_F(SubsystemRegistry, WhatCannotBeStartedIsToldByNameAndLeavesNothingStarted)
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
    add("broken", {"ok"}, Fail);
    EXPECT_THROW_MSG(registry.start("broken"), VoInvalidUseException, "broken");
    EXPECT_EQ(taken(), "+ok +broken -ok");
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

    std::atomic<int> starting{0};
    const auto addWaiting = [&](const char* name, const char* other) {
        add(name, {}, [&, other] {
            for (++starting; starting < 2;)
                std::this_thread::yield();
            registry.start(other);
        });
    };
    addWaiting("x", "y");
    addWaiting("y", "x");
    const auto start = [&](const char* name) { EXPECT_THROW(registry.start(name), VoInvalidCallException); };
    std::thread other(start, "x");
    start("y");
    other.join();
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
            VoDeque<VoString> needs;
            std::vector<int> numbers;
            for (int j = 0; j < i; ++j) {
                if (random() % 3 == 0) {
                    numbers.push_back(j);
                    needs.push_back("s" + VoString(j));
                }
            }
            const auto needsAreUp = [&up, numbers] {
                for (const int number : numbers)
                    EXPECT_EQ(up[number], 1);
            };
            const bool breaks = random() % 5 == 0;
            const int extra = i > 0 && random() % 3 == 0 ? static_cast<int>(random() % static_cast<unsigned>(i)) : -1;
            auto starts = std::make_shared<std::atomic<int>>(0);
            registry.add({"s" + VoString(i), needs,
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
        vo::test::Threads(3u, [&](unsigned t) {
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
        EXPECT_TRUE(registry.running().isEmpty());
        for (const std::atomic<int>& state : up)
            EXPECT_EQ(state, 0);
    }
}
