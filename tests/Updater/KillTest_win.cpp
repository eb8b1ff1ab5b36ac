// Updating and uninstalling in processes that end without a word before a step on disk, where calls of the system
// cannot be struck one by one as in FaultMatrixTest_linux.cpp.

#include "InstallFixture.h"

#include <QtCore/QProcess>

#include <windows.h>

namespace vo::test {

namespace {

constexpr int KilledCode = 99;

const Files First = {{"readme.txt", "first"},        {"lib/a.dat", Noise(60, 1)}, {"old/gone.txt", "goes"},
                     {"turns", "into a directory"},  {"back/to/file", "one"},     {"back/file", "two"},
                     {"\xc3\x84/\xc3\x96", "moves"}, {"was/empty/", ""}};
const Files Second = {{"readme.txt", "second, longer"}, {"lib/a.dat", Noise(60, 1)}, {"new/c.dat", Noise(45, 4)},
                      {"turns/into/this", "indeed"},    {"back", "a file now"},      {"\xc3\x96", "moves"}};

class KillTest : public InstallTest
{
protected:
    // Updates to the definition, or uninstalls, in a process that is killed at that step.
    int killed(const VoFilePath& definition, std::size_t step) const
    {
        std::wstring program(4096, L'\0');
        program.resize(::GetModuleFileNameW(nullptr, program.data(), 4096));
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const auto tell = [&](const char* name, const VoString& value) {
            environment.insert(QString::fromLatin1(name), value.toQString());
        };
        tell("VO_STEP", VoString(static_cast<std::uint64_t>(step)));
        tell("VO_UPDATES", updates().path());
        tell("VO_PLACE", place().path());
        tell("VO_DEFINITION", definition.path());
        tell("VO_PACKAGE", packageID.toString());
        process.setProcessEnvironment(environment);
        process.start(QString::fromStdWString(program), {QStringLiteral("--gtest_filter=KilledProcess.*"),
                                                         QStringLiteral("--gtest_also_run_disabled_tests")});
        process.waitForFinished(-1);
        return process.exitCode();
    }

    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
};

} // namespace

TEST(KilledProcess, DISABLED_Works)
{
    const auto told = [](const char* name) { return VoString(qEnvironmentVariable(name)); };
    VoUpdater::OverrideUpdateSystemDirectory(VoDirectoryPath(told("VO_UPDATES")));
    const StepWatch watch([n = qEnvironmentVariableIntValue("VO_STEP")](FileStep, const VoString&) mutable {
        if (--n == 0)
            ::TerminateProcess(::GetCurrentProcess(), KilledCode);
    });
    if (told("VO_DEFINITION").isEmpty())
        InstalledPackages::Uninstall(VoUUID(told("VO_PACKAGE")));
    else
        InstalledPackages::Install(VoFilePath(told("VO_DEFINITION")), VoDirectoryPath(told("VO_PLACE")), VoStopFlag());
}

TEST_F(KillTest, TheNextRunFindsAllOldOrAllNewAndGoesOn)
{
    for (const VoFilePath& definition : {second, VoFilePath()}) {
        wipe();
        install(first);
        const std::size_t steps =
            StepsOf([&] {
                definition.isNull() ? InstalledPackages::Uninstall(packageID) : install(definition);
            }).size();
        ASSERT_GT(steps, 8u);
        for (std::size_t i = 0, points = std::min<std::size_t>(steps, 24); i < points; ++i) {
            const std::size_t step = 1 + i * steps / points;
            SCOPED_TRACE("step " + std::to_string(step) + " of " + std::to_string(steps));
            wipe();
            install(first);
            ASSERT_EQ(killed(definition, step), KilledCode);
            InstalledPackages::Uninstall(VoUUID("another"));
            for (const auto& [name, content] : installedTree()) {
                const bool isNew = !definition.isNull() && Second.count(name) > 0 && content == Second.at(name);
                EXPECT_TRUE(isNew || name.back() == '/' || (First.count(name) > 0 && content == First.at(name)))
                    << name;
            }
            ASSERT_TRUE(definition.isNull() || installedTree() == First || installedTree() == Second);
            install(second);
            ASSERT_EQ(installedTree(), Second);
            ASSERT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).extra.isEmpty());
        }
    }
}

} // namespace vo::test
