// Installing processes that are killed, at every step that they make on disk and at random moments.

#include "InstallFixture.h"

#include <csignal>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>

namespace vo::test {

namespace {

const Files First = {{"readme.txt", "first"},           {"lib/a.dat", Noise(60, 1)},   {"lib/deep/b.dat", Noise(50, 2)},
                     {"old/gone.txt", "to be removed"}, {"turns", "into a directory"}, {"moved.dat", Noise(55, 5)}};
const Files Second = {{"readme.txt", "second, longer than before"},
                      {"lib/a.dat", Noise(60, 1)},
                      {"lib/deep/b.dat", Noise(50, 3)},
                      {"new/place/c.dat", Noise(45, 4)},
                      {"moved/to/d.dat", Noise(55, 5)},
                      {"turns/into/this", "indeed"}};

class KillSafetyTest : public InstallTest
{
protected:
    using Work = std::function<void()>;

    // Runs the work in a process of its own, which `arm` prepares. True when it was killed, false when it got through.
    static bool IsKilled(const Work& arm, const Work& work)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            try {
                arm();
                work();
            } catch (...) {
                ::_exit(1);
            }
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
        return WIFSIGNALED(status);
    }

    static Work KillAtStep(std::size_t n)
    {
        return [n] {
            vo::updater::detail::SetStepObserver([n, count = std::size_t{0}](FileStep, const VoString&) mutable {
                if (++count == n)
                    ::kill(::getpid(), SIGKILL);
            });
        };
    }

    // The system kills the process that asked for it after a time.
    static Work KillAfter(std::int64_t nanoseconds)
    {
        return [nanoseconds] {
            sigevent event = {};
            event.sigev_notify = SIGEV_SIGNAL;
            event.sigev_signo = SIGKILL;
            timer_t timer = {};
            ::timer_create(CLOCK_MONOTONIC, &event, &timer);
            itimerspec when = {};
            when.it_value.tv_sec = nanoseconds / 1000000000;
            when.it_value.tv_nsec = nanoseconds % 1000000000;
            ::timer_settime(timer, 0, &when, nullptr);
        };
    }

    // Nothing half-written is ever seen under an installed file's name.
    void expectOnlyWholeFiles() const
    {
        for (const auto& [name, content] : Tree(place())) {
            if (name.size() > 6 && name.substr(name.size() - 6) == ".vonew")
                continue;
            const auto isOf = [&name = name, &content = content](const Files& release) {
                const auto known = release.find(name);
                return known != release.end() && known->second == content;
            };
            EXPECT_TRUE(isOf(First) || isOf(Second)) << name;
        }
    }

    // Kills the work at every step, then does it again and compares with a run that went through at once.
    void expectSameEnd(const Work& prepare, const Work& work)
    {
        wipe();
        prepare();
        const std::size_t steps = StepsOf(work).size();
        const Files expected = snapshot();
        ASSERT_GT(steps, 3u);
        for (std::size_t n = 1; n <= steps; ++n) {
            SCOPED_TRACE("killed at step " + std::to_string(n) + " of " + std::to_string(steps));
            wipe();
            prepare();
            ASSERT_TRUE(IsKilled(KillAtStep(n), work));
            expectOnlyWholeFiles();
            work();
            ASSERT_EQ(snapshot(), expected);
        }
    }

    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
};

} // namespace

TEST_F(KillSafetyTest, AKilledFirstInstallationEndsAsIfNothingHadHappened)
{
    expectSameEnd([] {}, [this] { install(first); });
}

TEST_F(KillSafetyTest, AKilledUpdateEndsAsIfNothingHadHappened)
{
    expectSameEnd([this] { install(first); }, [this] { install(second); });
}

TEST_F(KillSafetyTest, AKilledUpdateThatCopiesMovedFilesEndsAsIfNothingHadHappened)
{
    options.reuseInstalledFiles = true;
    expectSameEnd([this] { install(first); }, [this] { install(second); });
}

TEST_F(KillSafetyTest, AKilledUninstallationEndsAsIfNothingHadHappened)
{
    expectSameEnd(
        [this] {
            install(first);
            install(second);
        },
        [this] { InstalledPackages::Uninstall(packageID); });
}

TEST_F(KillSafetyTest, AKilledRepairEndsAsIfNothingHadHappened)
{
    expectSameEnd(
        [this] {
            install(first);
            VoFileSystem::RemoveAll(place().directory("lib"));
            WriteBytes(placed("readme.txt"), Second.at("readme.txt"));
        },
        [this] { InstalledPackages::Repair(first, VoStopFlag()); });
}

// Also the directories that only the killed run knows of.
TEST_F(KillSafetyTest, UninstallingAfterAKilledInstallationLeavesNothing)
{
    wipe();
    const std::size_t steps = StepsOf([this] { install(first); }).size();
    for (std::size_t n = 1; n <= steps; ++n) {
        SCOPED_TRACE("killed at step " + std::to_string(n));
        wipe();
        ASSERT_TRUE(IsKilled(KillAtStep(n), [this] { install(first); }));
        InstalledPackages::Uninstall(packageID);
        EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
        EXPECT_FALSE(VoFileSystem::Exists(staging()));
        EXPECT_TRUE(InstalledPackages::Packages().isEmpty());
        const Files left = Tree(updates().directory("installed"));
        EXPECT_TRUE(left.empty() || (left.size() == 1 && left.count("packages.xml") == 1));
    }
}

TEST_F(KillSafetyTest, UninstallingAfterAKilledUpdateLeavesNothingButForeignFiles)
{
    wipe();
    install(first);
    const std::size_t steps = StepsOf([this] { install(second); }).size();
    for (std::size_t n = 1; n <= steps; ++n) {
        SCOPED_TRACE("killed at step " + std::to_string(n));
        wipe();
        install(first);
        WriteBytes(placed("lib/deep/mine.txt"), "foreign");
        ASSERT_TRUE(IsKilled(KillAtStep(n), [this] { install(second); }));
        InstalledPackages::Uninstall(packageID);
        EXPECT_EQ(Tree(directory("place")), (Files{{"of/app/lib/deep/mine.txt", "foreign"}}));
        EXPECT_FALSE(VoFileSystem::Exists(place().directory("new")));
        EXPECT_FALSE(VoFileSystem::Exists(place().directory("turns")));
    }
}

// A killed update is not gone on with: a third release fails, the first one is wanted back, and then none.
TEST_F(KillSafetyTest, OtherReleasesMayFollowAKilledRun)
{
    const VoFilePath third = publish("1.2.0", {{"readme.txt", "third"}, {"new/place/d.dat", Noise(45, 5)}});
    wipe();
    install(first);
    const std::size_t steps = StepsOf([this] { install(second); }).size();
    for (std::size_t n = 1; n <= steps; ++n) {
        SCOPED_TRACE("killed at step " + std::to_string(n));
        wipe();
        install(first);
        ASSERT_TRUE(IsKilled(KillAtStep(n), [this] { install(second); }));
        {
            const StepWatch watch([](FileStep step, const VoString& path) {
                if (step == FileStep::PutInPlace)
                    throw VoFileException("rename: Text file busy", path);
            });
            EXPECT_THROW(install(third), VoInstallationFailedException);
        }
        install(first);
        EXPECT_EQ(Tree(place()), First);
        EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).isIntact());
        EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).extra.isEmpty());
        InstalledPackages::Uninstall(packageID);
        EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
        EXPECT_EQ(Tree(updates()).size(), 1u); // the registry
    }
}

TEST_F(KillSafetyTest, ARunKilledAgainAndAgainStillEndsTheSame)
{
    wipe();
    install(first);
    const std::size_t steps = StepsOf([this] { install(second); }).size();
    const Files expected = snapshot();
    wipe();
    install(first);
    // Later and later in the run, each time from what the one before left.
    for (std::size_t n = 1; n <= steps; ++n)
        IsKilled(KillAtStep(n), [this] { install(second); });
    install(second);
    EXPECT_EQ(snapshot(), expected);
}

// Moments between the observed steps: inside the writing of documents, of the lock's file, of a chunk.
TEST_F(KillSafetyTest, RandomMomentsOfDeathEndTheSame)
{
    using Clock = std::chrono::steady_clock;
    wipe();
    const auto start = Clock::now();
    install(first);
    install(second);
    const std::int64_t whole = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
    const Files installed = snapshot();
    InstalledPackages::Uninstall(packageID);
    const Files uninstalled = snapshot();

    std::mt19937 random(20260101);
    std::uniform_int_distribution<std::int64_t> moment(1, whole);
    int killed = 0;
    for (int run = 0; run < 30; ++run) {
        SCOPED_TRACE("run " + std::to_string(run));
        wipe();
        killed += IsKilled(KillAfter(moment(random)), [this] {
            install(first);
            install(second);
        });
        expectOnlyWholeFiles();
        install(first);
        install(second);
        ASSERT_EQ(snapshot(), installed);
        killed += IsKilled(KillAfter(moment(random) / 4), [this] { InstalledPackages::Uninstall(packageID); });
        InstalledPackages::Uninstall(packageID);
        ASSERT_EQ(snapshot(), uninstalled);
    }
    EXPECT_GT(killed, 10);
}

} // namespace vo::test
