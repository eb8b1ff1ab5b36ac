#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Time/VoTimePoint.h>

#include <functional>
#include <memory>
#include <thread>

/// Logging by named categories to any number of sinks.
///
///     vo::logging::Logger::Get("updater").warning("Staging directory is not empty");
///
/// Logging never throws and may be done from all threads, also while static objects are destroyed. Nothing is shown
/// unless the program asks for it, with EnableStandardError(), Configure() or a sink: standard error is the program's.
namespace vo::logging {

/// How grave a record is.
enum class Level
{
    Diagnostic,  ///< For those who look for a fault.
    Information, ///< What was done.
    Warning,     ///< Done, but not as one might think.
    Error,       ///< Not done.
    Critical     ///< The process cannot go on.
};

/// The name of a level in lower case: "diagnostic" to "critical".
VOCORE_EXPORT const char* LevelName(Level level) noexcept;

/// One thing that was logged.
struct VOCORE_EXPORT Record
{
    Level level;            ///< How grave it is.
    VoString category;      ///< The logger's name.
    VoString text;          ///< The message, as given.
    VoTimePoint time;       ///< When it was logged.
    std::thread::id thread; ///< Who logged it.
};

/// Logs under one category.
class VOCORE_EXPORT Logger
{
public:
    /// The logger of `category`; names ignore case, the first spelling is kept. It lives until the process ends.
    static Logger& Get(const VoString& category);

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// @name Logging
    /// Logs `text` at the level of the name.
    /// @{
    void diagnostic(const VoString& text) noexcept;
    void information(const VoString& text) noexcept;
    void warning(const VoString& text) noexcept;
    void error(const VoString& text) noexcept;
    void critical(const VoString& text) noexcept;
    void log(Level level, const VoString& text) noexcept; ///< At a level that is not known beforehand.
    /// @}

    /// Whether a record of `level` would reach any sink: ask before building an expensive text.
    bool isEnabled(Level level) const noexcept;

    const VoString& category() const noexcept; ///< The logger's name.
    Level level() const noexcept;              ///< Records below this level are dropped; at first Diagnostic, or what
                                               ///< Configure() has said. Critical also where nothing is logged.
    void setLevel(Level level) noexcept;       ///< Sets level().

private:
    friend struct LoggerRegistry;
    struct Private;

    explicit Logger(const VoString& category);
    ~Logger();

    std::unique_ptr<Private> m_private;
};

/// Sets the level of the category's logger.
VOCORE_EXPORT void SetLevel(const VoString& category, Level level);

/// Receives records.
using Sink = std::function<void(const Record&)>;

/// Hands every record of `minimum` and above to `sink` while the receiver lives.
///
/// A sink runs on the thread that logs, possibly on several at once, and no lock is held. What it logs itself is
/// dropped, what it throws is swallowed. Destroying the receiver waits for the sink where it is just running on another
/// thread.
/// @throws VoInvalidParameterException "Invalid callback" when the sink is empty
[[nodiscard]] VOCORE_EXPORT VoReceiver AddSink(Sink sink, Level minimum = Level::Diagnostic);

/// @name Standard error
/// Records of at least a level go to standard error, at first none.
/// @{
VOCORE_EXPORT void EnableStandardError(Level minimum = Level::Warning); ///< From `minimum` on.
VOCORE_EXPORT void DisableStandardError();                              ///< Nothing.
/// @}

/// Writes records to files in the directory "logs" below `directory` while the receiver lives. There is one file a
/// day, continued in a next one at 10 MB, and the newest five are kept. A line holds the time, level, category, thread
/// and text, with control characters escaped. Warnings and worse are flushed at once. Trouble with the files is not
/// reported: records are then lost.
[[nodiscard]] VOCORE_EXPORT VoReceiver SetUp(const VoFilePath& directory);

/// The line of a record, without its end: "2024-02-29T12:30:00.250Z warning [updater] (140211) text". Control
/// characters and others that steer a terminal, and bytes that are not UTF-8, are escaped in the text and category as
/// "\n", "\t", "\x1b", "\u2028" and so on, so that one record stays one line.
VOCORE_EXPORT VoString FormatRecord(const Record& record);

/// Routes Qt's messages (qWarning() and so on) into the category "qt" until the process ends. Calling it again does
/// nothing.
VOCORE_EXPORT void InstallQtHandler();

} // namespace vo::logging
