#pragma once

#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>

#include <functional>
#include <memory>
#include <optional>

namespace vo::tool {

/// Lets a person at a terminal type lines: with editing, a history, and completion by the Tab key where the platform's
/// part offers that. One object at a time.
class LineEditor
{
public:
    /// What could stand where the cursor is.
    struct Candidates
    {
        std::size_t start = 0;   ///< Of the word, in bytes.
        VoDeque<VoString> words; ///< In its place.
    };
    using Completer = std::function<Candidates(const VoString& line)>; ///< Given the line up to the cursor.

    /// @param ended once raised, the line that is being typed is the end
    LineEditor(Completer completer, const VoStopFlag& ended);
    ~LineEditor(); ///< Gives the terminal back.
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// The next line, empty when the person gave it up by Ctrl-C; none at the end.
    std::optional<VoString> read(const VoString& prompt);
    void remember(const VoString& line); ///< Adds a line to the history.

private:
    struct Private;
    const std::unique_ptr<Private> m_private;
};

} // namespace vo::tool
