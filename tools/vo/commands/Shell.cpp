#include <vo/Interrupt.h>
#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/line/LineHistory.h>
#include <vo/screen/LineEditor.h>
#include <vo/screen/Terminal.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <Shell/VoScriptedTest.h>
#include <Shell/VoShell.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

namespace vo::tool {
namespace {

constexpr std::size_t LargestInput = std::size_t(16) << 20;

void ShowLines(Console& console, const VoString& text)
{
    const std::string& bytes = text.toStdString();
    for (std::size_t start = 0; start <= bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        console.line(VoString(bytes.substr(start, end - start)));
        start = end + 1;
    }
}

void ShowOutput(Console& console, const VoString& text)
{
    if (!console.settings().json)
        return ShowLines(console, text);
    console.row("output", VoString(), JsonRecord()("text", text));
}

void ShowResult(Console& console, const VoShellValue& value)
{
    if (value.isNull())
        return;
    if (!console.settings().json)
        return ShowLines(console, value.toText());
    console.row("results", VoString(),
                JsonRecord()("form", VoShellValue::FormText(value.form()))("text", value.toText()));
}

VoString StandardInput()
{
    std::string text;
    char block[65536];
    for (std::size_t count; (count = std::fread(block, 1, sizeof block, stdin)) > 0;) {
        text.append(block, count);
        if (text.size() > LargestInput)
            throw Failure("standard input is too large for a script");
    }
    return VoString(text);
}

/// Reads lines from a person. What fails is told, and the next line is asked for.
class Conversation
{
public:
    Conversation(Session& session, VoShell& shell)
        : m_session(session)
        , m_shell(shell)
        , m_editor([&shell](const VoString& line) { return Candidates(shell, line); }, session.stop)
        , m_history(VoFilePath(VoFileSystem::Directory(VoFileSystem::ApplicationData).path() + "vo-shell-history"))
    {
        kept([this] {
            for (const VoString& line : m_history.read())
                m_editor.remember(line);
        });
    }

    ExitCode run()
    {
        const Interrupt idle{VoStopFlag()}; // Ctrl-C between two lines is meant for the one that has just ended
        m_session.console.note("help lists the functions; exit or Ctrl-D ends the shell");
        for (std::optional<VoString> line = next(); line; line = next()) {
            if (line->isEmpty())
                continue;
            m_editor.remember(*line);
            m_history.add(*line);
            carryOut(*line);
        }
        kept([this] { m_history.save(); });
        m_session.stop.throwIfStopped();
        return ExitCode::Done;
    }

private:
    static LineEditor::Candidates Candidates(const VoShell& shell, const VoString& line)
    {
        const VoShell::Completions completions = shell.completions(line, line.size());
        return {completions.start, completions.words};
    }

    /// None at the end.
    std::optional<VoString> next()
    {
        const std::optional<VoString> line = m_editor.read("vo> ");
        if (!line && !m_session.stop.isStopped())
            m_session.console.line(VoString()); // the terminal's own prompt begins a line
        if (!line || line->trimmed() == "exit" || line->trimmed() == "quit")
            return std::nullopt;
        return line->trimmed().toString();
    }

    void carryOut(const VoString& line)
    {
        const VoStopFlag stop = m_session.stop.child();
        const Interrupt interrupt(stop);
        try {
            ShowResult(m_session.console, m_shell.run(line, stop));
        } catch (const VoUserCancelledException&) {
            m_session.console.error("stopped");
        } catch (...) {
            m_session.console.error(ToldFailure(m_session.arguments, "", ""));
        }
    }

    /// The history is a comfort: that it cannot be kept ends nothing.
    template <typename Work>
    void kept(Work work)
    {
        try {
            work();
        } catch (...) {
            m_session.console.note("the history is not kept: " + TextOfLibrary(CurrentExceptionText()));
        }
    }

    Session& m_session;
    VoShell& m_shell;
    LineEditor m_editor;
    LineHistory m_history;
};

ExitCode RunTest(Session& session)
{
    if (session.arguments.count() != 1 || session.arguments.has("line"))
        throw UsageError("option --test takes one script and no lines");
    const VoScriptedTest test = VoScriptedTest::Read(session.arguments.fileArgument(0), session.arguments.argument(0));
    try {
        test.run([&](const VoString& text) { ShowLines(session.console, text); }, session.stop);
    } catch (const VoUserCancelledException&) {
        throw;
    } catch (...) {
        throw Failure(ToldFailure(session.arguments, "", "").text); // whatever failed, the test did
    }
    return ExitCode::Done;
}

ExitCode Run(Session& session)
{
    const Arguments& arguments = session.arguments;
    if (arguments.has("test"))
        return RunTest(session);
    if (arguments.has("line") && arguments.count() > 0)
        throw UsageError("a script and --line exclude each other");
    session.console.list("results");
    session.console.list("output");
    VoShell shell([&](const VoString& text) { ShowOutput(session.console, text); });
    shell.setOnResult([&](const VoShellValue& value) { ShowResult(session.console, value); });
    for (const VoString& line : arguments.texts("line"))
        ShowResult(session.console, shell.run(line, session.stop));
    if (arguments.count() > 0)
        shell.runScript(arguments.fileArgument(0), session.stop);
    else if (!arguments.has("line") && InputIsTerminal())
        return Conversation(session, shell).run();
    else if (!arguments.has("line"))
        shell.runText(StandardInput(), "standard input", session.stop);
    return ExitCode::Done;
}

} // namespace

Command ShellCommand()
{
    return {
        "shell",
        "[SCRIPT]",
        "carry out lines that call functions",
        "Carries out the lines of a script, of --line or of standard input, and shows what their functions give;\n"
        "at a terminal, lines as they are typed, with a history and with completion by the Tab key. \"help\" lists\n"
        "the functions, \"help NAME\" tells about one. Words stand apart by blanks; \"...\" keeps blanks and puts\n"
        "values in, '...' keeps all as it is; $name stands for a value, $_ for the last result, [a, b] for a list,\n"
        "name=... for a parameter out of its turn; # begins a comment. A script ends at the first line that fails.\n"
        "Ctrl-C ends the function that runs.\n",
        {{"line", "LINE", "carry out this line", 'c', true},
         {"test", nullptr, "the script is a test: in an empty folder of its own, and with expectations"}},
        0,
        1,
        Run};
}

} // namespace vo::tool
