#include "Program.h"

#include "CommandError.h"
#include "Downloads.h"
#include "Help.h"
#include "Interrupt.h"
#include "Paths.h"
#include "Session.h"
#include "Terminal.h"

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoReceiver.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/VoUpdater.h>

#include <QtCore/QStringList>

#include <algorithm>
#include <mutex>
#include <vector>

namespace vo::tool {
namespace {

const VoString installationFailed = "Installation failed: ";

VoString causeOf(const VoString& text)
{
    return text.startsWith(installationFailed) ? text.substring(installationFailed.size()).toString() : text;
}

bool wantsProgress(const Arguments& arguments)
{
    const VoString wanted = arguments.text("progress").value_or("");
    if (!wanted.isEmpty() && wanted != "always" && wanted != "never")
        throw UsageError("option --progress: \"" + wanted + "\" is neither always nor never");
    if (wanted == "always")
        return true;
    return wanted.isEmpty() && !arguments.has("quiet") && ErrorOutputIsTerminal();
}

Console::Settings settingsOf(const Arguments& arguments)
{
    if (arguments.has("quiet") && arguments.has("verbose"))
        throw UsageError("options --quiet and --verbose exclude each other");
    Console::Settings settings;
    settings.json = arguments.has("json");
    settings.quiet = arguments.has("quiet");
    settings.verbose = arguments.has("verbose");
    settings.progress = wantsProgress(arguments);
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
        const VoString text = record.category + ": " + record.text;
        // What downloads warn of is shown by the policy's listener, or ends in the failure.
        if (record.level < logging::Level::Warning || record.category == "download")
            m_console.detail(text);
        else if (record.level == logging::Level::Warning)
            m_console.note("warning: " + text);
        else
            keep(record.text);
    }

    /// Shows the errors that @p failure does not repeat.
    void showErrors(const VoString& failure)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const VoString cause = causeOf(failure);
        for (const VoString& text : m_errors) {
            if (cause.isEmpty() || !text.contains(cause))
                m_console.note("error: " + text);
        }
        m_errors.clear();
    }

    /// A failure as it was logged, where that begins with the document that it is about; what is thrown does not tell.
    VoString withPlace(const VoString& failure)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto logged = std::find_if(m_errors.begin(), m_errors.end(), [&](const VoString& text) {
            return text.endsWith(": " + failure, VoString::CaseSensitive);
        });
        return logged == m_errors.end() ? failure : *logged;
    }

private:
    void keep(const VoString& text)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_errors.size() < MostErrors)
            m_errors.push_back(text);
    }

    static constexpr std::size_t MostErrors = 100;

    Console& m_console;
    std::mutex m_mutex;
    std::vector<VoString> m_errors;
};

/// The text of the exception that is being handled, with the file concerned where the text does not name it.
VoString textOfCurrentException()
{
    const VoString text = CurrentExceptionText();
    try {
        throw;
    } catch (const VoFileException& exception) {
        const VoFilePath& file = exception.path1();
        if (file.isNull() || text.contains(file.path()) || text.contains(PathText(file)))
            return text;
        return text.endsWith(": ") ? text + PathText(file) : text + ": " + PathText(file);
    } catch (...) {
        return text;
    }
}

/// Runs the command and turns whatever it throws into a message and a code.
ExitCode guarded(const Command& command, Session& session, LogView& log)
{
    Console& console = session.console;
    try {
        const ExitCode code = command.run(session);
        log.showErrors("");
        return code;
    } catch (const CommandError& failure) {
        log.showErrors("");
        console.error(failure.text);
        return failure.code;
    } catch (...) {
        const VoString text = textOfCurrentException();
        const ExitCode code = CodeOfCurrentException();
        const VoString message = log.withPlace(text);
        log.showErrors(text);
        if (code == ExitCode::Cancelled)
            console.error("stopped as asked; nothing is left half-written, and the same command goes on from here");
        else
            console.error(message);
        return code;
    }
}

ExitCode runCommand(const Arguments& arguments, Console& console)
{
    const Command& command = *arguments.command();
    const VoStopFlag stop;
    const Interrupt interrupt(stop);
    LogView log(console);
    logging::DisableStandardError();
    logging::InstallQtHandler(); // what Qt warns of may be a server's text
    const VoReceiver sink =
        logging::AddSink([&log](const logging::Record& record) { log.show(record); },
                         arguments.has("verbose") ? logging::Level::Diagnostic : logging::Level::Warning);
    if (const auto directory = arguments.directory("updates-dir"))
        VoUpdater::OverrideUpdateSystemDirectory(*directory);
    DownloadCounts counts;
    Session session{arguments, console, stop, PrepareDownloads(arguments, console, counts), counts};
    return console.finish(command.name, guarded(command, session, log));
}

ExitCode refuseUsage(const VoString& text, bool json)
{
    Console::Settings settings;
    settings.json = json;
    Console console(settings);
    console.error(text);
    return console.finish("", ExitCode::WrongUsage);
}

} // namespace

bool IsRefusal(const VoString& text)
{
    static const char* const beginnings[] = {
        "Invalid target path: ",
        "Invalid chunk path: ",
        "Invalid definition path: ",
        "Invalid package definition: ",
        "Invalid identifier: ",
        "Document type declarations are not allowed",
        "Invalid path in zip archive: ",
        "Overlapping entries in zip archive: ",
        "File belongs to another package: ",
        "File belongs to no package: ",
        "Package is installed in another directory: ",
        "Release is older than the installed one: ",
    };
    const VoString cause = causeOf(text);
    return std::any_of(std::begin(beginnings), std::end(beginnings),
                       [&](const char* beginning) { return cause.startsWith(beginning); });
}

ExitCode CodeOfCurrentException()
{
    try {
        throw;
    } catch (const VoUserCancelledException&) {
        return ExitCode::Cancelled;
    } catch (const VoException& exception) {
        if (causeOf(exception.message()) == VoUserCancelledException().message())
            return ExitCode::Cancelled;
        return IsRefusal(exception.message()) ? ExitCode::Unsafe : ExitCode::Failed;
    } catch (...) {
        return ExitCode::Failed;
    }
}

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
        Console console(settingsOf(arguments));
        return runCommand(arguments, console);
    } catch (const UsageError& error) {
        return refuseUsage(error.text, texts.contains(QStringLiteral("--json")));
    } catch (...) {
        Console(Console::Settings()).error(CurrentExceptionText());
        return ExitCode::Failed;
    }
}

} // namespace vo::tool
