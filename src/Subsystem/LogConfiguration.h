#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <Subsystem/VoLogging.h>

#include <cstddef>
#include <optional>

namespace vo::logging {

/// From which level on categories are logged.
struct VOCORE_EXPORT LevelRule
{
    VoString pattern;             ///< A category, "*" stands for any characters; letters ignore case.
    std::optional<Level> minimum; ///< The lowest level that is logged; none where nothing is.
};

/// Whether standard error gets colours.
enum class Colours
{
    Automatic, ///< On a terminal, unless the environment has NO_COLOR or says that the terminal is "dumb".
    Always,    ///< Also into files and pipes.
    Never      ///< Not at all.
};

/// What is logged, and where it goes.
///
///     Configure(Configuration::FromEnvironment());        // VO_LOG="updater=diagnostic,*=warning"
///
/// As a text it is a list of settings, with commas or line ends between them:
///
/// | setting | meaning |
/// |---|---|
/// | `CATEGORY=LEVEL` | categories that match are logged from a level on: diagnostic, information, warning, error,
/// critical, or off | | `LEVEL` | the same for all categories | | `@stderr=LEVEL` | what goes to standard error | |
/// `@colour=auto` | or always, or never | | `@folder=DIRECTORY` | lines go to files in a directory | |
/// `@json=DIRECTORY` | so do JSON objects, one a line | | `@size=BYTES` | a file that has reached this size is ended;
/// "10000000", "512K", "10M", "1G" | | `@files=N` | how many files of a directory are kept, 1 to 1000 | | `@days=N` |
/// files older than N days are removed; 0: whatever their age | | `@system=LEVEL` | what goes to the system's log | |
/// `@crash=FILE` | the file that gets the last records when the process crashes |
///
/// Of several rules that match a category the most particular one counts: a category without "*", else the one with the
/// most other characters, of equal ones the last. Where there are rules, what none of them matches is logged from
/// Warning on, and standard error shows all that the rules let through unless "@stderr" is set.
struct VOCORE_EXPORT Configuration
{
    VoDeque<LevelRule> levels{};          ///< The rules; without any everything is logged.
    std::optional<Level> standardError{}; ///< From which level on standard error gets lines; at first it gets none.
    Colours colours = Colours::Automatic; ///< Whether these have colours.
    VoFilePath folder{};                  ///< The directory for lines; null for none.
    VoFilePath jsonFolder{};              ///< The directory for JSON objects; null for none.
    std::size_t fileSize = 10000000;      ///< Bytes after which a file is ended.
    std::size_t files = 5;                ///< How many files of each directory are kept.
    std::size_t days = 0;                 ///< Files of more days ago are removed; 0: none.
    std::optional<Level> systemLog{};     ///< From which level on the system's log gets records.
    VoFilePath crashFile{};               ///< What gets the last records before a crash; null for none.

    /// @name From texts
    /// @throws VoInvalidParameterException "Invalid log setting " + setting + ": " and what would be right; of the
    ///         environment and of a file with " in VO_LOG" or " in " and the path behind the setting
    /// @{
    /// The configuration of a text. An empty one gives that of a process that configures nothing.
    static Configuration FromText(const VoString& text);
    /// That of the environment variable VO_LOG.
    static Configuration FromEnvironment();
    /// That of a file, UTF-8, one setting a line (so that directories may have commas in their names); what begins with
    /// "#" is a comment.
    /// @throws VoInvalidParameterException "Log settings too long: " and the path, beyond a million bytes; and what
    /// reading a file throws
    static Configuration FromFile(const VoFilePath& path);
    /// That of properties: the text of `name`, and "@stderr" and so on of `name` + ".stderr" and so on, whatever
    /// their kinds. Others are left alone.
    static Configuration FromProperties(const VoProperties& properties, const VoString& name = "log");
    /// @}
};

/// Makes a configuration that of the process, in place of the one before; no record of other threads is lost
/// meanwhile. Sinks added by AddSink() and SetUp() are not touched, explicit
/// levels of SetLevel() are replaced. Any thread may call.
///
/// Files are named and continued as those of SetUp(), with the ending ".log" or ".jsonl"; each record is written at
/// once and as a whole, so that several processes may share a directory. JSON objects have the members "time", "level",
/// "category", "thread" and "text".
///
/// The crash file gets a line that tells the signal and the last 256 records (as far as they pass the rules, each cut
/// at 480 bytes) when the process ends by SIGSEGV, SIGABRT, SIGBUS, SIGFPE or SIGILL, or by an unhandled exception of
/// Windows; what happened without it happens then. It is continued until it has a million bytes, then begun anew. A
/// thread whose stack has overflown can only write it if it is the one that called this.
/// @throws VoCannotOpenFileException with the file, or what making a directory throws, when a directory cannot be used
/// @throws VoPathSizeFileException for a crash file whose path is too long; the configuration before stays then
VOCORE_EXPORT void Configure(const Configuration& configuration);

/// The record as a JSON object, without an end of line. Bytes that are not UTF-8 become U+FFFD.
VOCORE_EXPORT VoString FormatJSON(const Record& record);

} // namespace vo::logging
