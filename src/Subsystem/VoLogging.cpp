#include <Subsystem/VoLogging.h>

#include <Core/VoException.h>
#include <Core/VoPrintable.h>
#include <Core/detail/Callback.h>
#include <FileSystem/VoFilePath.h>
#include <Subsystem/detail/LogFiles.h>
#include <Subsystem/detail/LogLevels.h>
#include <Threading/detail/CallbackList.h>

#include <QtCore/QtGlobal>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <sstream>
#include <utility>

namespace vo::logging {

namespace {

// Set while this thread runs sinks: what they log is dropped.
thread_local bool t_sending = false;

// Marks this thread as running sinks.
class Sending
{
public:
    Sending() { t_sending = true; }
    Sending(const Sending&) = delete;
    Sending& operator=(const Sending&) = delete;
    ~Sending() { t_sending = false; }
};

class SinkList final : public vo::detail::CallbackList
{
public:
    ~SinkList() override { release(); }

    VoReceiver addSink(Sink sink, Level minimum);
    void send(const Record& record);

    bool wants(Level level) const noexcept
    {
        return static_cast<int>(level) >= m_minimum.load(std::memory_order_relaxed);
    }

    void disconnect(const VoUUID& id) override
    {
        CallbackList::disconnect(id);
        refreshMinimum();
    }

private:
    struct SinkEntry final : Entry
    {
        Sink sink;
        Level minimum = Level::Diagnostic;
    };

    void refreshMinimum();

    std::mutex m_refreshMutex;
    std::atomic<int> m_minimum{NoLevel}; // the lowest level that any sink wants
};

VoReceiver SinkList::addSink(Sink sink, Level minimum)
{
    vo::detail::RequireCallback(sink);
    auto entry = std::make_shared<SinkEntry>();
    entry->sink = std::move(sink);
    entry->minimum = minimum;
    VoReceiver receiver = add(std::move(entry));
    refreshMinimum();
    return receiver;
}

void SinkList::send(const Record& record)
{
    callEach([&](Entry& entry) {
        const auto& sinkEntry = static_cast<SinkEntry&>(entry);
        if (record.level < sinkEntry.minimum)
            return;
        try {
            sinkEntry.sink(record);
        } catch (...) {
            // The one who logs must not suffer from a sink.
        }
    });
}

void SinkList::refreshMinimum()
{
    const std::lock_guard lock(m_refreshMutex);
    int minimum = NoLevel;
    inspectEach([&](const Entry& entry) {
        minimum = std::min(minimum, static_cast<int>(static_cast<const SinkEntry&>(entry).minimum));
    });
    m_minimum.store(minimum, std::memory_order_relaxed);
}

// Never destroyed, like the loggers: static objects log while the process ends.
SinkList& Sinks()
{
    static SinkList& sinks = *new SinkList;
    return sinks;
}

std::atomic<int>& StandardErrorMinimum()
{
    static std::atomic<int> minimum{NoLevel};
    return minimum;
}

bool StandardErrorWants(Level level)
{
    return static_cast<int>(level) >= StandardErrorMinimum().load(std::memory_order_relaxed);
}

std::atomic<bool>& StandardErrorColours()
{
    static std::atomic<bool> wanted{false};
    return wanted;
}

const char* ColourOf(Level level)
{
    switch (level) {
    case Level::Diagnostic:
        return "\x1b[2m"; // faint
    case Level::Information:
        return "";
    case Level::Warning:
        return "\x1b[33m"; // yellow
    case Level::Error:
        return "\x1b[31m"; // red
    case Level::Critical:
        break;
    }
    return "\x1b[1;31m"; // bold red
}

VoString StandardErrorLine(const Record& record)
{
    if (!StandardErrorColours().load(std::memory_order_relaxed))
        return FormatRecord(record) + "\n";
    return ColourOf(record.level) + FormatRecord(record) + "\x1b[0m\n";
}

void Send(const Record& record)
{
    if (StandardErrorWants(record.level)) {
        const VoString line = StandardErrorLine(record);
        std::fwrite(line.c_str(), 1, line.size(), stderr); // one call, so that lines do not mix
    }
    Sinks().send(record);
}

Level LevelOfQt(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return Level::Diagnostic;
    case QtInfoMsg:
        return Level::Information;
    case QtWarningMsg:
        return Level::Warning;
    case QtCriticalMsg:
        return Level::Error;
    case QtFatalMsg:
        break;
    }
    return Level::Critical;
}

void HandleQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    static Logger& logger = Logger::Get("qt");
    try {
        logger.log(LevelOfQt(type), VoString(text));
    } catch (...) {
        // Out of memory for the text; Qt cannot be thrown at.
    }
}

} // namespace

const char* LevelName(Level level) noexcept
{
    switch (level) {
    case Level::Diagnostic:
        return "diagnostic";
    case Level::Information:
        return "information";
    case Level::Warning:
        return "warning";
    case Level::Error:
        return "error";
    case Level::Critical:
        break;
    }
    return "critical";
}

struct Logger::Private
{
    VoString category;
    std::atomic<int> threshold{static_cast<int>(Level::Diagnostic)}; // NoLevel: nothing passes
};

struct LoggerRegistry
{
    std::mutex mutex;
    std::map<VoString, Logger*> loggers; // the strings compare without case
    VoDeque<LevelRule> rules;

    // Never destroyed: static objects log while the process ends.
    static LoggerRegistry& Get()
    {
        static LoggerRegistry& registry = *new LoggerRegistry;
        return registry;
    }

    Logger& get(const VoString& category)
    {
        const std::lock_guard lock(mutex);
        Logger*& logger = loggers[category];
        if (!logger) {
            logger = new Logger(category);
            setThreshold(*logger);
        }
        return *logger;
    }

    void apply(const VoDeque<LevelRule>& wanted)
    {
        const std::lock_guard lock(mutex);
        rules = wanted;
        for (const auto& [category, logger] : loggers)
            setThreshold(*logger);
    }

private:
    void setThreshold(Logger& logger) const
    {
        logger.m_private->threshold.store(ThresholdOf(logger.category(), rules), std::memory_order_relaxed);
    }
};

Logger::Logger(const VoString& category)
    : m_private(std::make_unique<Private>())
{
    m_private->category = category;
}

Logger::~Logger() = default;

Logger& Logger::Get(const VoString& category)
{
    return LoggerRegistry::Get().get(category);
}

void Logger::diagnostic(const VoString& text) noexcept
{
    log(Level::Diagnostic, text);
}

void Logger::information(const VoString& text) noexcept
{
    log(Level::Information, text);
}

void Logger::warning(const VoString& text) noexcept
{
    log(Level::Warning, text);
}

void Logger::error(const VoString& text) noexcept
{
    log(Level::Error, text);
}

void Logger::critical(const VoString& text) noexcept
{
    log(Level::Critical, text);
}

void Logger::log(Level level, const VoString& text) noexcept
{
    if (t_sending || !isEnabled(level))
        return;
    const Sending sending;
    try {
        Send(Record{level, category(), text, VoTimePoint::Now(), std::this_thread::get_id()});
    } catch (...) {
        // Out of memory: the record is lost, the one who logs goes on.
    }
}

bool Logger::isEnabled(Level level) const noexcept
{
    return static_cast<int>(level) >= m_private->threshold.load(std::memory_order_relaxed) &&
           (Sinks().wants(level) || StandardErrorWants(level));
}

const VoString& Logger::category() const noexcept
{
    return m_private->category;
}

Level Logger::level() const noexcept
{
    return static_cast<Level>(
        std::min(m_private->threshold.load(std::memory_order_relaxed), static_cast<int>(Level::Critical)));
}

void Logger::setLevel(Level level) noexcept
{
    m_private->threshold.store(static_cast<int>(level), std::memory_order_relaxed);
}

void ApplyLevelRules(const VoDeque<LevelRule>& rules)
{
    LoggerRegistry::Get().apply(rules);
}

void ColourStandardError(bool wanted) noexcept
{
    StandardErrorColours().store(wanted, std::memory_order_relaxed);
}

void SetLevel(const VoString& category, Level level)
{
    Logger::Get(category).setLevel(level);
}

VoReceiver AddSink(Sink sink, Level minimum)
{
    if (!sink)
        throw VoInvalidParameterException("Invalid callback");
    return Sinks().addSink(std::move(sink), minimum);
}

void EnableStandardError(Level minimum)
{
    StandardErrorMinimum().store(static_cast<int>(minimum), std::memory_order_relaxed);
}

void DisableStandardError()
{
    StandardErrorMinimum().store(NoLevel, std::memory_order_relaxed);
}

VoReceiver SetUp(const VoFilePath& directory)
{
    const auto files = std::make_shared<LogFiles>(VoFilePath(directory.path() + "\\logs"));
    return AddSink([files](const Record& record) { files->write(record); });
}

VoString FormatRecord(const Record& record)
{
    std::ostringstream thread;
    thread.imbue(std::locale::classic());
    thread << record.thread;
    std::string line = record.time.toString().toStdString() + ' ' + LevelName(record.level) + " [";
    line += vo::Printable(record.category).toStdString();
    line += "] (" + thread.str() + ") ";
    line += vo::Printable(record.text).toStdString();
    return VoString(std::move(line));
}

void InstallQtHandler()
{
    qInstallMessageHandler(HandleQtMessage);
}

} // namespace vo::logging
