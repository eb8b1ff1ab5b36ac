#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>

#include <Core/VoException.h>
#include <FileSystem/VoFileSystem.h>
#include <Shell/VoScriptedTest.h>
#include <Shell/VoScriptedTestRun.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <limits>
#include <string>

namespace vo::tool {
namespace {

using Outcome = VoScriptedTestRun::Outcome;

bool HasAny(const VoScriptedTest& test, const std::vector<VoString>& tags)
{
    return std::any_of(tags.begin(), tags.end(), [&](const VoString& tag) { return test.hasTag(tag); });
}

VoDeque<VoScriptedTest> TestsAt(const Arguments& arguments, std::size_t index)
{
    const VoString& name = arguments.argument(index);
    return Doing(arguments, "read", name, [&]() -> VoDeque<VoScriptedTest> {
        if (VoFileSystem::IsDirectory(arguments.fileArgument(index)))
            return VoScriptedTest::Find(arguments.directoryArgument(index));
        return {VoScriptedTest::Read(arguments.fileArgument(index), name)};
    });
}

VoDeque<VoScriptedTest> ChosenTests(const Arguments& arguments)
{
    const std::vector<VoString> wanted = arguments.texts("tag");
    const std::vector<VoString> unwanted = arguments.texts("skip");
    VoDeque<VoScriptedTest> tests;
    for (std::size_t i = 0; i < arguments.count(); ++i) {
        for (const VoScriptedTest& test : TestsAt(arguments, i)) {
            if ((wanted.empty() || HasAny(test, wanted)) && !HasAny(test, unwanted))
                tests.pushBack(test);
        }
    }
    if (tests.isEmpty())
        throw Failure("no such tests in " + arguments.argument(0));
    return tests;
}

void Show(Console& console, const VoScriptedTestRun::Result& result)
{
    const double seconds = static_cast<double>(result.duration.count()) / 1e9;
    const VoString outcome = VoScriptedTestRun::OutcomeText(result.outcome);
    VoString padded = outcome;
    padded.resize(9, ' ');
    console.row("tests", padded + "  " + result.test.name + "  (" + TimeText(seconds) + ")",
                JsonRecord()("name", result.test.name)("outcome", outcome)("seconds", seconds)(
                    "message", result.message)("output", result.output));
    if (result.outcome == Outcome::Passed)
        return;
    console.line("    " + result.message);
    std::size_t start = 0;
    const std::string& output = result.output.toStdString();
    while (start < output.size() && console.settings().verbose) {
        const std::size_t end = std::min(output.find('\n', start), output.size());
        console.line("    | " + VoString(output.substr(start, end - start)));
        start = end + 1;
    }
}

ExitCode Run(Session& session)
{
    const Arguments& arguments = session.arguments;
    VoScriptedTestRun run;
    run.program = VoString(QCoreApplication::applicationFilePath());
    run.arguments = {"shell", "--test", "--quiet"};
    run.processes = static_cast<std::size_t>(arguments.integer("processes", 0, 0, 1000));
    run.limit = VoSeconds(arguments.integer("limit", 60, 1, 86400));
    const std::optional<VoFilePath> report = arguments.file("junit");
    const VoDeque<VoScriptedTest> tests = ChosenTests(arguments);

    session.console.list("tests");
    const auto results = run.run(tests, session.stop, [&](const auto& result) { Show(session.console, result); });
    if (report)
        Doing(arguments, "write", *arguments.text("junit"),
              [&] { VoScriptedTestRun::WriteJUnit(*report, arguments.argument(0), results); });
    const auto passed = static_cast<std::size_t>(std::count_if(
        results.begin(), results.end(), [](const auto& result) { return result.outcome == Outcome::Passed; }));
    session.console.fact("passed", "passed", passed);
    session.console.fact("failed", "failed", results.size() - passed);
    return passed == results.size() ? ExitCode::Done : ExitCode::Failed;
}

} // namespace

Command TestCommand()
{
    return {"test",
            "FOLDER|SCRIPT...",
            "run scripted tests",
            "Runs the scripts named *.vo in folders, each in a process and an empty folder of its own, several at a\n"
            "time, and lists how they ended. In such a script \"expect ACTUAL EXPECTED\" compares, numbers with\n"
            "tolerance=...; \"expect-error TEXT LINE\" wants a line to fail; \"expect-file FILE\" looks at files. "
            "Comments\n"
            "\"# tags: a b\" and \"# limit: 20s\" at its beginning give it tags and a time. The exit code is 1 when a "
            "test\n"
            "fails.\n",
            {{"tag", "TAG", "run only tests with this tag, or another that is given", '\0', true},
             {"skip", "TAG", "leave out tests with this tag", '\0', true},
             {"processes", "N", "run N tests at a time, instead of as many as there are processors"},
             {"limit", "SECONDS", "kill a test without a time of its own after this time, instead of 60"},
             {"junit", "FILE", "write the results in the form of JUnit too"}},
            1,
            AnyNumber,
            Run};
}

} // namespace vo::tool
