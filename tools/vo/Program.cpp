#include <vo/Program.h>

#include <vo/Interrupt.h>
#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Help.h>
#include <vo/release/Downloads.h>
#include <vo/screen/Terminal.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Subsystem/LogConfiguration.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoReceiver.h>
#include <Updater/VoUpdater.h>

#include <QtCore/QStringList>

#include <algorithm>
#include <exception>
#include <mutex>
#include <vector>

namespace vo::tool {
namespace {

bool WantsProgress(const Arguments& arguments)
{
    const VoString wanted = arguments.text("progress").value_or("");
    if (!wanted.isEmpty() && wanted != "always" && wanted != "never")
        throw UsageError("option --progress: \"" + wanted + "\" is neither always nor never");
    if (wanted == "always")
        return true;
    return wanted.isEmpty() && !arguments.has("quiet") && ErrorOutputIsTerminal();
}

Console::Settings SettingsOf(const Arguments& arguments)
{
    if (arguments.has("quiet") && arguments.has("verbose"))
        throw UsageError("options --quiet and --verbose exclude each other");
    Console::Settings settings;
    settings.json = arguments.has("json");
    settings.quiet = arguments.has("quiet");
    settings.verbose = arguments.has("verbose");
    settings.progress = WantsProgress(arguments);
    settings.colours = ErrorOutputShowsColours();
    return settings;
}

/// Shows what the library logs. Errors wait until the command has ended: most of them are thrown as well, and the same
/// text twice helps nobody.
class LogView
{
public:
    explicit LogView(Console& console)
        : m_console(console)
    {
    }

    void show(const logging::Record& record)
    {
        const VoString text = record.category + ": " + TextOfLibrary(record.text);
        // What downloads warn of is shown by the policy's listener, or ends in the failure.
        // What is logged while an exception is on its way is a consequence of what will be told.
        if (record.level < logging::Level::Warning || record.category == "download" || std::uncaught_exceptions() > 0)
            m_console.detail(text);
        else if (record.level == logging::Level::Warning)
            m_console.note("warning: " + text);
        else
            keep(record.text);
    }

    /// Shows the errors that nobody has told.
    void showErrors()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const VoString& text : m_errors) {
            if (!m_console.hasTold(text))
                m_console.note("error: " + TextOfLibrary(text));
        }
        m_errors.clear();
    }

private:
    void keep(const VoString& text)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_errors.size() < MostErrors && std::find(m_errors.begin(), m_errors.end(), text) == m_errors.end())
            m_errors.push_back(text);
    }

    static constexpr std::size_t MostErrors = 100;

    Console& m_console;
    std::mutex m_mutex;
    std::vector<VoString> m_errors;
};

/// Runs the command and turns whatever it throws into a message and a code.
ExitCode Guarded(const Command& command, Session& session, LogView& log)
{
    try {
        const ExitCode code = Doing(session.arguments, "", "", [&] { return command.run(session); });
        log.showErrors();
        return code;
    } catch (const CommandError& failure) {
        session.console.error(failure);
        log.showErrors();
        return failure.code;
    }
}

/// What VO_LOG asks for comes beside what commands show.
void ConfigureLog()
{
    try {
        logging::Configure(logging::Configuration::FromEnvironment());
    } catch (const VoException& failure) {
        throw UsageError(failure.message());
    }
}

ExitCode RunCommand(const Arguments& arguments, Console& console)
{
    const Command& command = *arguments.command();
    const VoStopFlag stop;
    const Interrupt interrupt(stop);
    LogView log(console);
    logging::DisableStandardError();
    if (!qEnvironmentVariableIsEmpty("VO_LOG"))
        ConfigureLog();
    logging::InstallQtHandler(); // what Qt warns of may be a server's text
    const VoReceiver sink =
        logging::AddSink([&log](const logging::Record& record) { log.show(record); },
                         arguments.has("verbose") ? logging::Level::Diagnostic : logging::Level::Warning);
    if (const auto directory = arguments.directory("updates-dir"))
        VoUpdater::OverrideUpdateSystemDirectory(*directory);
    DownloadCounts counts;
    Session session{arguments, console, stop, PrepareDownloads(arguments, console, counts), counts};
    return console.finish(command.name, Guarded(command, session, log));
}

/// Ends a run that did not come to its command.
ExitCode Refuse(const CommandError& error, const QStringList& texts)
{
    Console::Settings settings;
    settings.json = texts.contains(QStringLiteral("--json"));
    settings.colours = ErrorOutputShowsColours();
    Console console(settings);
    console.error(error.text);
    return console.finish(Arguments::CommandOf(texts), error.code);
}

} // namespace

ExitCode RunProgram(const QStringList& texts)
{
    try {
        const Arguments arguments(texts);
        if (arguments.has("version"))
            return PrintVersion();
        if (arguments.has("help"))
            return PrintHelp(arguments.command());
        if (arguments.command() == nullptr)
            throw UsageError("no command is given; see vo help");
        Console console(SettingsOf(arguments));
        return RunCommand(arguments, console);
    } catch (const CommandError& error) {
        return Refuse(error, texts);
    } catch (...) {
        return Refuse(Failure(CurrentExceptionText()), texts);
    }
}

} // namespace vo::tool
