// Installing, updating, repairing, uninstalling and publishing in processes that die at a call of the system, or in
// which one call or all from one on fail. Some of the calls are tried; with VOCORE_FULL_MATRIX set, all of them.

#include "InstallFixture.h"
#include "SystemCalls_linux.h"

#include <Updater/AdvertisedPackages.h>
#include <Updater/PackageVerifier.h>
#include <Updater/ReleasePatches.h>

#include <cerrno>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

namespace vo::test {

namespace {

using Kind = CallFault::Kind;
using vo::updater::AdvertisedPackages;
using vo::updater::PackageVerifier;
using vo::updater::ReleasePatches;

// Files and directories change places, and files change, move, come and go.
const Files First = {{"readme.txt", "first"},
                     {"lib/a.dat", Noise(60, 1)},
                     {"lib/deep/b.dat", Noise(50, 2)},
                     {"lib/patched.dat", Noise(200, 6)},
                     {"old/gone.txt", "to be removed"},
                     {"turns", "into a directory"},
                     {"back/to/file", "one"},
                     {"back/file", "two"},
                     {"moved.dat", Noise(55, 5)},
                     {"bin/tool", "[x]the same bytes"},
                     {"bin/data", "other bytes"},
                     {"so/l.so.1.0", "one"},
                     {"so/l.so.1", "-> l.so.1.0"},
                     {"so/l.so", "-> l.so.1"},
                     {"lib64/x", "here, then there"},
                     {"lib32", "-> lib64"},
                     {"flip", "-> readme.txt"},
                     {"flop", "a file"},
                     {"was/empty/", ""}};
const Files Second = {{"readme.txt", "second, longer than before"},
                      {"lib/a.dat", Noise(60, 1)},
                      {"lib/deep/b.dat", Noise(50, 3)},
                      {"lib/patched.dat", "!" + Noise(200, 6)},
                      {"new/place/c.dat", Noise(45, 4)},
                      {"moved/to/d.dat", Noise(55, 5)},
                      {"turns/into/this", "indeed"},
                      {"back", "a file now"},
                      {"bin/tool", "the same bytes"},
                      {"bin/data", "[x]other bytes"},
                      {"so/l.so.1.1", "two"},
                      {"so/l.so.1", "-> l.so.1.1"},
                      {"so/l.so", "-> l.so.1"},
                      {"lib32/x", "here, then there"},
                      {"lib64", "-> lib32"},
                      {"flip", "a file"},
                      {"flop", "-> bin/../flip"},
                      {"is/empty/", ""}};

struct Scenario
{
    const char* name;
    bool copies;    // moved files
    bool isSecond;  // what the work installs
    bool hasSecond; // what is there before, else the first release
    enum class Work
    {
        Install,
        Replace,
        Repair,
        Uninstall,
        Stage,
        Commit,
    } work;
};

class FaultMatrixTest : public InstallTest
{
protected:
    enum class End
    {
        Killed,
        Succeeded,
        Failed,
    };

    // What becomes of the work in a process of its own.
    static End RunFaulty(const CallFault& fault, const std::function<void()>& work)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            Arm(fault);
            int code = 0;
            try {
                work();
            } catch (const VoException&) {
                code = 1;
            } catch (...) {
                code = 2;
            }
            ::_exit(code);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            return End::Killed;
        EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
        EXPECT_LE(WEXITSTATUS(status), 1) << "an exception that is not the library's";
        return WEXITSTATUS(status) == 0 ? End::Succeeded : End::Failed;
    }

    // The calls that a fault of that kind may strike.
    static std::size_t CallsOf(CallFault fault, const std::function<void()>& work)
    {
        fault.number = static_cast<std::size_t>(-1);
        Arm(fault);
        work();
        return Disarm();
    }

    // Sanitizers make each run slow, and look for other faults than a state of the disk: there every third will do.
    static std::size_t Apart() { return std::getenv("VOCORE_FEW_FAULTS") ? 3 : 1; }

    static std::vector<std::size_t> Points(std::size_t calls, std::size_t few)
    {
        std::vector<std::size_t> points;
        const bool isFull = std::getenv("VOCORE_FULL_MATRIX") != nullptr;
        const std::size_t number = isFull ? calls : std::min(calls, few / Apart());
        for (std::size_t i = 0; i < number; ++i)
            points.push_back(1 + i * calls / number);
        return points;
    }

    // Each kind of fault at some calls of the work.
    template <typename Prepare, typename Check>
    void forEachFault(const Prepare& prepare, const std::function<void()>& work, const Check& check)
    {
        std::size_t runs = 0;
        std::vector<std::pair<CallFault, std::string>> faults = {{{Kind::Kill}, "killed before"},
                                                                 {{Kind::KillHalfway}, "killed halfway in"}};
        for (const auto& [code, name] : {std::pair(ENOSPC, "ENOSPC"), std::pair(EIO, "EIO"),
                                         std::pair(EACCES, "EACCES"), std::pair(EMFILE, "EMFILE")}) {
            faults.push_back({{Kind::FailOne, 0, code}, std::string(name) + " once at"});
            faults.push_back({{Kind::FailAll, 0, code}, std::string(name) + " from"});
        }
        for (auto& [fault, name] : faults) {
            prepare();
            const bool isDeath = fault.kind == Kind::Kill || fault.kind == Kind::KillHalfway;
            const std::size_t calls = CallsOf(fault, work);
            for (const std::size_t number : Points(calls, isDeath ? 16 : 8)) {
                SCOPED_TRACE(name + " call " + std::to_string(number) + " of " + std::to_string(calls));
                prepare();
                fault.number = number;
                try {
                    check(fault, RunFaulty(fault, work), runs++);
                } catch (const VoException& exception) {
                    FAIL() << exception.message().c_str();
                }
                if (HasFatalFailure())
                    return;
            }
        }
        if (std::getenv("VOCORE_FULL_MATRIX"))
            std::cout << runs << " runs\n";
    }
};

class InstallFaultTest : public FaultMatrixTest, public testing::WithParamInterface<Scenario>
{
protected:
    void prepare() { restore(prepared); }

    void make()
    {
        wipe();
        switch (GetParam().work) {
        case Scenario::Work::Install:
            return;
        case Scenario::Work::Repair:
            install(first);
            VoFileSystem::RemoveAll(place().directory("lib"));
            WriteBytes(placed("readme.txt"), Second.at("readme.txt"));
            for (const char* gone : {"so/l.so", "lib32", "was/empty"})
                std::filesystem::remove(vo::detail::ToNative(placed(gone)));
            WriteEntry(vo::detail::ToNative(placed("lib32")), "-> so");
            std::filesystem::permissions(vo::detail::ToNative(placed("bin/tool")), std::filesystem::perms(0644));
            return;
        case Scenario::Work::Commit:
            install(first);
            InstalledPackages::Stage(second, place(), VoStopFlag(), options);
            return;
        default:
            install(GetParam().hasSecond ? second : first);
        }
    }

    void work(const VoStopFlag& stop = VoStopFlag())
    {
        switch (GetParam().work) {
        case Scenario::Work::Repair:
            InstalledPackages::Repair(first, stop);
            return;
        case Scenario::Work::Uninstall:
            InstalledPackages::Uninstall(packageID, stop);
            return;
        case Scenario::Work::Stage:
            InstalledPackages::Stage(second, place(), stop, options);
            return;
        case Scenario::Work::Commit:
            if (VoFileSystem::Exists(updates().directory("staged").file(packageID.toString() + ".xml")))
                InstalledPackages::Commit(packageID, stop);
            else
                install(second, stop);
            return;
        default:
            install(GetParam().isSecond ? second : first, stop);
        }
    }

    // Files and directories below "place".
    Files placeState() const
    {
        Files state = snapshot();
        state.erase(state.lower_bound("updates/"), state.end());
        return state;
    }

    // Brings back a state of the disk without installing anew.
    void restore(const Files& state) const
    {
        VoFileSystem::RemoveAll(directory("place"));
        VoFileSystem::RemoveAll(updates());
        const auto root = vo::detail::ToNative(directory("place")).parent_path().parent_path();
        for (const auto& [name, content] : state) {
            WriteEntry(root / name, content);
        }
    }

    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second, 40, 1);
    Files prepared;
};

// The builders' temporary directories are below that of the test, so that killed processes leave nothing elsewhere.
class PublishFaultTest : public FaultMatrixTest
{
protected:
    PublishFaultTest()
    {
        VoFileSystem::CreateDirectory(directory("tmp"));
        ::setenv("TMPDIR", vo::detail::ToNative(directory("tmp")).c_str(), 1);
    }
    ~PublishFaultTest() override
    {
        if (m_usual.empty())
            ::unsetenv("TMPDIR");
        else
            ::setenv("TMPDIR", m_usual.c_str(), 1);
    }

    bool isDeclaredAndWhole(const char* version) const
    {
        const auto declared = AdvertisedPackages::Open(declarations());
        for (const auto& release : declared->declarations()) {
            if (release.version() != VoVersion::Deserialize(version))
                continue;
            const VoFilePath definition = declarations().parent().appended(release.path());
            return PackageVerifier::Verify(AdvertisedPackageListing::Open(definition), definition,
                                           sourceOf(release.version().toString()), {});
        }
        return false;
    }

    // How many patches the second release lists, all of which are there.
    std::size_t patchesPublished() const
    {
        const VoDirectoryPath release =
            directory("server").directory("packages").directory(packageID.toString()).directory("1.1.0.0");
        const VoString document = ReadBytes(release.file(ReleasePatches::FileName));
        const auto patches = ReleasePatches::Parse(document, "patches").patches;
        return static_cast<std::size_t>(std::count_if(patches.begin(), patches.end(), [&](const auto& patch) {
            return VoFileSystem::Checksum(release.appended(patch.file().path())) == patch.checksum;
        }));
    }

private:
    const std::string m_usual = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "";
};

} // namespace

// A release is declared when it is there as a whole; those declared before are never touched.
TEST_F(PublishFaultTest, AReleaseIsDeclaredWholeOrNotAtAll)
{
    const VoFilePath first = publish("1.0.0", First);
    for (const auto& [name, content] : Second)
        WriteEntry(vo::detail::ToNative(sourceOf("1.1.0.0")) / name, content);
    const Files before = FilesBelow(directory("server"));
    const auto prepare = [&] {
        VoFileSystem::RemoveAll(directory("server"));
        for (const auto& [name, content] : before)
            WriteBytes(directory("server").appended(VoFilePath(name.c_str())), content);
    };
    const auto work = [&] {
        vo::updater::UpdatePackageBuilder builder(*AdvertisedPackageListing::Open(first),
                                                  VoVersion::Deserialize("1.1.0"), 40, 6);
        builder.keepAttributes();
        builder.makePatches(1);
        builder.add(sourceOf("1.1.0.0"), declarations());
        builder.finalise(declarations());
    };
    forEachFault(prepare, work, [&](const CallFault& fault, End end, std::size_t) {
        ASSERT_TRUE(isDeclaredAndWhole("1.0.0"));
        const bool isDeclared = ReadBytes(declarations()) != before.at("releases.xml");
        ASSERT_EQ(isDeclaredAndWhole("1.1.0"), isDeclared);
        if (end == End::Succeeded) {
            ASSERT_TRUE(isDeclared);
        }
        if (end == End::Failed && fault.kind == Kind::FailOne) {
            ASSERT_EQ(FilesBelow(directory("server")), before);
        }
        work();
        ASSERT_TRUE(isDeclaredAndWhole("1.0.0"));
        ASSERT_TRUE(isDeclaredAndWhole("1.1.0"));
        ASSERT_EQ(patchesPublished(), 1u);
    });
}

// Whatever happens to a process, the next operation, even one on another package, finds the old release or the new one
// as a whole; and the same call, or another one, then does what it would have done. What says that it succeeded, has.
TEST_P(InstallFaultTest, EndsAllOldOrAllNew)
{
    const bool isUninstall = GetParam().work == Scenario::Work::Uninstall;
    options.reuseInstalledFiles = GetParam().copies;
    make();
    if (GetParam().isSecond && GetParam().work == Scenario::Work::Replace) {
        ASSERT_EQ(InstalledPackages::Plan(second, place(), options).patchedFiles, 1u);
    }
    prepared = snapshot();
    const Files before = placeState();
    work();
    const Files expected = snapshot();
    const Files after = placeState();
    const auto check = [&](const CallFault& fault, End end, std::size_t run) {
        const bool isUndone = end == End::Failed && fault.kind == Kind::FailOne && !isUninstall;
        if (isUndone) {
            ASSERT_EQ(placeState(), before);
        }
        InstalledPackages::Uninstall(VoUUID("another"));
        const Files now = placeState();
        if (isUninstall) {
            for (const auto& [name, content] : now)
                EXPECT_EQ(content, before.count(name) > 0 ? before.at(name) : "not of the release") << name;
        } else {
            ASSERT_TRUE(now == before || now == after);
        }
        if (end == End::Succeeded) {
            ASSERT_EQ(now, after);
        }
        switch (run % 3) {
        case 0:
            work();
            ASSERT_EQ(snapshot(), expected);
            break;
        case 1:
            InstalledPackages::Uninstall(packageID);
            ASSERT_FALSE(VoFileSystem::Exists(directory("place")));
            ASSERT_FALSE(InstalledPackages::IsUnfinished(packageID));
            break;
        default:
            install(first);
            ASSERT_EQ(installedTree(), First);
            ASSERT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).extra.isEmpty());
            ASSERT_FALSE(InstalledPackages::IsUnfinished(packageID));
        }
    };
    forEachFault([this] { prepare(); }, [this] { work(); }, check);
}

TEST_P(InstallFaultTest, ARaisedStopFlagEndsItBetweenFilesAndTheSameCallGoesOn)
{
    options.reuseInstalledFiles = GetParam().copies;
    make();
    prepared = snapshot();
    const Files before = placeState();
    const std::size_t steps = StepsOf([this] { work(); }).size();
    const Files expected = snapshot();
    std::size_t cancelled = 0;
    for (std::size_t n = 1; n <= steps; n += Apart()) {
        SCOPED_TRACE("step " + std::to_string(n));
        prepare();
        const VoStopFlag stop;
        {
            const StepWatch watch([&, count = std::size_t{0}](FileStep, const VoString&) mutable {
                if (++count == n)
                    stop.stop();
            });
            try {
                work(stop);
            } catch (const VoException& end) {
                ++cancelled;
                EXPECT_NE(std::string(end.what()).find("User cancelled"), std::string::npos) << end.what();
                if (GetParam().work != Scenario::Work::Uninstall) {
                    EXPECT_EQ(placeState(), before);
                }
            }
        }
        work();
        ASSERT_EQ(snapshot(), expected);
    }
    EXPECT_GT(cancelled, 3u);
}

// Between the checks and any step, a folder gives way to a link to one outside that holds all that it held.
TEST_P(InstallFaultTest, AFolderThatIsReplacedByALinkMeanwhileLeadsNothingOutside)
{
    namespace fs = std::filesystem;
    options.reuseInstalledFiles = GetParam().copies;
    make();
    prepared = snapshot();
    const std::size_t steps = StepsOf([this] { work(); }).size();
    const Files expected = snapshot();
    const fs::path outside = vo::detail::ToNative(file("outside"));
    std::size_t refused = 0;
    for (const char* name : {"lib", "back", ""}) {
        const fs::path folder = vo::detail::ToNative(placed(name)).string();
        const fs::path real = *name ? folder : folder.parent_path();
        const fs::path hidden = real.string() + ".hidden";
        for (std::size_t n = 1; n <= steps; n += Apart()) {
            SCOPED_TRACE(std::string(name) + " at step " + std::to_string(n));
            prepare();
            Files decoy;
            {
                const StepWatch watch([&, count = std::size_t{0}](FileStep, const VoString&) mutable {
                    if (++count != n || !fs::is_directory(fs::symlink_status(real)))
                        return;
                    fs::remove_all(outside);
                    fs::copy(real, outside, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
                    decoy = TreeOf(outside);
                    fs::rename(real, hidden);
                    fs::create_directory_symlink(outside, real);
                });
                try {
                    work();
                } catch (const VoException&) {
                    ++refused;
                }
            }
            if (!fs::is_symlink(fs::symlink_status(real)))
                continue;
            ASSERT_EQ(TreeOf(outside), decoy);
            fs::remove(real);
            fs::rename(hidden, real);
            work();
            // What was out of reach is left to its owner: old files that were to go.
            for (const auto& [path, content] : snapshot()) {
                if (expected.count(path) > 0) {
                    ASSERT_EQ(content, expected.at(path)) << path;
                } else {
                    ASSERT_EQ(path.rfind("place/", 0), 0u) << path;
                }
            }
            for (const auto& entry : expected)
                ASSERT_TRUE(fs::exists(vo::detail::ToNative(file(entry.first.c_str())))) << entry.first;
        }
    }
    EXPECT_TRUE(refused > 3 || GetParam().work == Scenario::Work::Stage) << refused;
}

INSTANTIATE_TEST_SUITE_P(Operations, InstallFaultTest,
                         testing::Values(Scenario{"FirstInstallation", false, true, false, Scenario::Work::Install},
                                         Scenario{"Update", false, true, false, Scenario::Work::Replace},
                                         Scenario{"UpdateThatCopies", true, true, false, Scenario::Work::Replace},
                                         Scenario{"WayBack", false, false, true, Scenario::Work::Replace},
                                         Scenario{"Repair", false, false, false, Scenario::Work::Repair},
                                         Scenario{"Staging", true, false, false, Scenario::Work::Stage},
                                         Scenario{"Committing", false, false, false, Scenario::Work::Commit},
                                         Scenario{"Uninstallation", false, false, true, Scenario::Work::Uninstall}),
                         [](const testing::TestParamInfo<Scenario>& scenario) {
                             return std::string(scenario.param.name);
                         });

} // namespace vo::test
