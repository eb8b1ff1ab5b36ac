#pragma once

#include <Core/VoDeque.h>
#include <Core/VoString.h>

#include <string>

namespace vo::detail {

class ShellInterpreter;

/// What could stand where somebody is typing a line of the shell.
class Completion
{
public:
    /// @param typed the line up to the cursor
    Completion(std::string typed, const ShellInterpreter& interpreter);

    std::size_t start() const noexcept { return m_start; } ///< Of the word that is being typed.
    VoDeque<VoString> words() const;                       ///< What it could become, in order.

private:
    VoDeque<VoString> functions() const;
    VoDeque<VoString> values() const;
    VoDeque<VoString> parameters() const;
    VoDeque<VoString> files() const;
    void addIfBegun(VoDeque<VoString>& words, const VoString& word) const;

    const std::string m_typed;
    const ShellInterpreter& m_interpreter;
    std::size_t m_start;
    std::string m_word;  // from there on
    std::string m_first; // the first word of the line; empty while that is being typed
};

} // namespace vo::detail
