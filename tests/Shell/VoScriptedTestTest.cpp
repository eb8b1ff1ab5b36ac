#include <Shell/VoScriptedTest.h>

#include <Application/VoApplication.h>
#include <Application/VoGlobalValues.h>
#include <Application/VoLayeredProperties.h>
#include <Application/VoValueDefinition.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Shell/VoScriptException.h>
#include <Shell/VoScriptedTestRun.h>
#include <Shell/VoShell.h>
#include <Shell/VoShellFunctions.h>
#include <Subsystem/Registry.h>

#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <exception>

namespace {

using vo::test::ScratchFolder;

std::string FailureOf(const ScratchFolder& scratch, const std::string& lines)
{
    try {
        VoScriptedTest{scratch.write("test.vo", lines), "test"}.run(nullptr, VoStopFlag());
        return "";
    } catch (const VoScriptException& failure) {
        const std::string text = failure.message().toStdString();
        return text.substr(text.find(", line ") + 7);
    }
}

TEST(VoScriptedTest, LeavesNoTraceInTheProcess)
{
    VoGlobalValues::Define({"Scripted.Depth", 3, "of tests"});
    VoGlobalValues::Set("Scripted.Depth", 4);
    const ScratchFolder scratch;
    scratch.write("test.vo", "set Scripted.Depth 9\nfile.write a.txt x\necho $Scripted.Depth\nfile.list .\n"
                             "table.column $_ name\nshow $_\nexpect 1 2");
    std::string out;
    const VoScriptedTest test = VoScriptedTest::Read(scratch.path("test.vo"), "test");
    EXPECT_THROW(test.run([&](const VoString& text) { out += text.toStdString() + "\n"; }, VoStopFlag()),
                 VoScriptException);
    EXPECT_EQ(out, "9\n[a.txt]\n");
    EXPECT_EQ(VoGlobalValues::Value("Scripted.Depth").asInteger(), 4);
    EXPECT_FALSE(std::filesystem::exists(scratch.native("a.txt")));
    VoStopFlag stop;
    stop.stop();
    EXPECT_THROW_MSG(test.run(nullptr, stop), VoUserCancelledException, "User cancelled");
}

TEST(VoScriptedTest, ExpectationsTellWhatIsDifferent)
{
    const ScratchFolder scratch;
    const struct
    {
        const char* lines;
        const char* failure;
    } rows[] = {
        {"expect 3 3.0\nexpect 1e-3 0.0011 tolerance=2e-4\nexpect [1 a] [1.0 a]\nexpect nan nan\nexpect on on", ""},
        {"file.size $_folder/test.vo\nexpect $_ 39", ""},
        {"expect a A", "1: Expected \"A\", got \"a\""},
        {"expect 5 5.1", "1: Expected \"5.1\", got \"5\""},
        {"expect [1 2] [1 3] tolerance=0.5", "1: Expected \"[1, 3]\", got \"[1, 2]\", tolerance 0.5"},
        {"expect [1 2] [1 2 3]", "1: Expected \"[1, 2, 3]\", got \"[1, 2]\""},
        {"expect nan 1", "1: Expected \"1\", got \"nan\""},
        {"expect-error x echo", "1: Expected an error with \"x\", but nothing failed"},
        {"expect-error \"no such\" nonsense",
         "1: Expected an error with \"no such\", got \"Undefined function: nonsense\""},
        {"expect-error 1 expect-error 2 expect 3 3.5", "1: Expected an error with \"1\", got \"Expected an error with "
                                                       "\"2\", got \"Expected \"3.5\", got \"3\"\"\""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailureOf(scratch, row.lines), row.failure) << row.lines;
}

TEST(VoScriptedTest, RemarksAreReadFromTheHeadOfAScript)
{
    const ScratchFolder scratch;
    scratch.write("a.vo", "\xef\xbb\xbf# tags: One  two\r\n\n#limit: 1m 30s \r\necho\n# tags: late\n");
    scratch.write("b.vo", "# limit: soon\n");
    const VoScriptedTest test = VoScriptedTest::Read(scratch.path("a.vo"), "a");
    EXPECT_TRUE(test.tags == (VoDeque<VoString>{"One", "two"}));
    EXPECT_TRUE(test.hasTag("ONE"));
    EXPECT_EQ(test.limit.count(), 90'000'000'000);
    EXPECT_THROW_MSG(VoScriptedTest::Read(scratch.path("b.vo"), "b"), VoInvalidUseException,
                     "Invalid limit in " + scratch.path("b.vo").path() + ": soon");
}

TEST(VoScriptedTestRun, TellsWhatCannotBeStartedAndStops)
{
    const ScratchFolder scratch;
    scratch.write("a.vo", "");
    VoScriptedTestRun run;
    run.program = VoString(scratch.native("no-program").string());
    const auto tests = VoScriptedTest::Find(VoDirectoryPath::FromText(scratch.path("").path() + "\\"));
    const auto results = run.run(tests, VoStopFlag());
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results.at(0).outcome, VoScriptedTestRun::Outcome::NotRun);
    EXPECT_TRUE(results.at(0).message.contains("no-program"));
    VoStopFlag stop;
    stop.stop();
    EXPECT_THROW_MSG(run.run(tests, stop), VoUserCancelledException, "User cancelled");
    EXPECT_THROW_MSG(run.run(tests, VoStopFlag(), [](const auto&) { throw VoInvalidCallException("enough"); }),
                     VoInvalidCallException, "enough");
}

TEST(VoShellFunctions, PropertiesAreSetByTheirDefinitions)
{
    VoLayeredProperties properties;
    properties.define({"shell.grid", 0.5, "of tests", 0.0, 1.0});
    VoFunctionRegistry functions;
    VoShellFunctions::AddProperties(functions, properties);
    VoShell shell(nullptr, functions);
    shell.run("property.set Shell.Grid 1");
    EXPECT_TRUE(shell.run("property.get shell.grid") == VoShellValue(1.0));
    EXPECT_THROW(shell.run("property.set shell.grid 2"), VoInvalidParameterException);
    const VoVariantTable table = shell.run("property.list").table();
    EXPECT_TRUE(table.at(1, 2) == VoVariant("user"));
    shell.run("property.reset shell.grid");
    EXPECT_EQ(properties.value("shell.grid").asDouble(), 0.5);
    VoShellFunctions::RemoveProperties(functions);
    EXPECT_TRUE(functions.names().isEmpty());
}

TEST(VoShellFunctions, TheApplicationsPropertiesComeAndGoWithTheSubsystem)
{
    const ScratchFolder scratch;
    qputenv("VOAPPDATAPATH", QByteArray::fromStdString(scratch.native().string()));
    vo::subsystem::RegisterShell();
    vo::subsystem::RegisterShell();
    EXPECT_THROW_MSG(vo::subsystem::Running(vo::subsystem::Registry::Global(), "shell"), VoInvalidCallException,
                     "No application object");
    char name[] = "shell-test";
    char* arguments[] = {name, nullptr};
    VoApplication application({"shell-test"}, 1, arguments);
    VoShell shell;
    {
        const vo::subsystem::Running running(vo::subsystem::Registry::Global(), "shell");
        shell.run("property.set some.name 3");
        EXPECT_TRUE(application.properties().value("Some.Name") == VoVariant("3"));
    }
    EXPECT_THROW(shell.run("property.list"), VoUndefinedFunctionException);
    qunsetenv("VOAPPDATAPATH");
}

} // namespace
