#pragma once

#include <vo/line/CommandError.h>
#include <vo/line/ExitCode.h>
#include <vo/line/Values.h>
#include <vo/screen/Json.h>
#include <vo/screen/ProgressLine.h>

#include <Core/VoString.h>

#include <QtCore/QString>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace vo::tool {

/// What the user reads: results on standard output, everything else on standard error.
///
/// With --json a result goes into one document that is printed at the end, and nothing else reaches standard output.
/// Texts may come from documents: control characters are shown, not obeyed. Any thread may call.
class Console
{
public:
    /// What the options ask for.
    struct Settings
    {
        bool json = false;
        bool quiet = false;
        bool verbose = false;
        bool progress = false; ///< Draw the progress line.
        bool colours = false;  ///< Errors red, warnings yellow.
    };

    explicit Console(const Settings& settings)
        : m_settings(settings)
    {
    }
    ~Console(); ///< Takes the progress line away.
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    const Settings& settings() const { return m_settings; }

    /// @{ Results.
    void line(const VoString& text); ///< For people only.
    /// A figure of the result: a line "label   text" for people, a member for programs.
    template <typename Value>
    void fact(const char* key, const char* label, const VoString& text, const Value& value)
    {
        labelled(label, text);
        member(key, value);
    }
    template <typename Value>
    void fact(const char* key, const char* label, const Value& value)
    {
        fact(key, label, VoString(value), value);
    }
    /// A member for programs only.
    template <typename Value>
    void member(const char* key, const Value& value)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_settings.json)
            m_document(key, value);
    }
    /// Starts a list for programs: it is in the document even when no row follows.
    void list(const char* key);
    /// One more row of a list.
    void row(const char* key, const VoString& text, const QJsonObject& record);
    /// @}

    /// @{ Messages, each a line that begins with the program's name.
    void note(const VoString& text);         ///< Nothing with --quiet.
    void detail(const VoString& text);       ///< With --verbose only.
    void error(const VoString& text);        ///< Always.
    void error(const CommandError& failure); ///< Always; hasTold() knows what it tells.
    /// @}

    /// Whether a text that the library logged says what an error has told.
    bool hasTold(const VoString& logged);

    /// Draws how far the work is; a new label begins a new line.
    void progress(const VoString& label, ProgressLine::Unit unit, std::uint64_t done, std::uint64_t total);
    void endProgress(); ///< Takes the line away.

    /// Prints the document, if one is wanted, completed by how the command ended. Returns the code to end with: results
    /// that cannot be written to standard output are a failure too.
    ExitCode finish(const VoString& command, ExitCode code);

private:
    void labelled(const char* label, const VoString& text);
    void message(const VoString& text, const char* colour = nullptr);
    void draw(bool force);
    void erase();

    const Settings m_settings;
    std::mutex m_mutex; ///< Guards what follows, and the order of what is written.
    JsonRecord m_document;
    std::map<QString, QJsonArray> m_lists;
    VoString m_error;
    std::vector<VoString> m_told; ///< What logged texts hold that say the same as errors.
    std::optional<ProgressLine> m_line;
    std::size_t m_drawn = 0; ///< Columns that the progress line covers.
    VoTimePoint m_drawnAt;
};

} // namespace vo::tool
