#pragma once

#include <Core/VoDeque.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/ShellLine.h>

#include <functional>
#include <string>
#include <vector>

namespace vo::detail {

/// The lines of a script, without a byte-order mark. Throws as VoShell::runScript().
std::string ReadScript(const VoFilePath& file);

/// Carries out lines. Its statements are what needs more than arguments: the interpreter itself, or the rest of a line.
class ShellInterpreter
{
public:
    /// A line, taken apart.
    struct Line
    {
        const VoString& text;
        std::vector<ShellWord> words;
        const VoStopFlag& stop;
    };
    struct Statement
    {
        VoString name;
        VoString usage;
        VoString help;
        std::size_t fewest; // arguments
        std::size_t most;
        std::function<void(const Line&)> body;
    };

    ShellInterpreter(std::function<void(const VoString&)> output, const VoAbstractFunctionRegistry& registry);
    ShellInterpreter(const ShellInterpreter&) = delete;
    ShellInterpreter& operator=(const ShellInterpreter&) = delete;

    VoShellValue run(const VoString& line, const VoStopFlag& stop);
    void runText(const VoString& text, const VoString& name, const VoStopFlag& stop);
    void runScript(const VoFilePath& path, const VoStopFlag& stop);

    /// The value of a word of a line, as an argument. What stands before its "=" belongs to it unless it is named.
    VoFunctionArgument argument(const ShellWord& word, bool isNamed = false) const;
    VoString text(const ShellWord& word) const;      ///< Of a word that is no list, all of it.
    VoFilePath rooted(const VoFilePath& path) const; ///< As seen from the directory, where one is set.
    void print(const VoString& text) const;

    VoDeque<Statement> statements;
    VoFunctionContext context;
    VoShellValue result;
    std::function<void(const VoShellValue&)> onResult;
    const VoAbstractFunctionRegistry& functions;

private:
    VoString joined(const ShellWord& word) const;
    VoShellValue listOf(const ShellWord& word, bool& isQuoted) const;
    VoShellValue valueOf(const VoString& name, std::size_t column) const;
    VoShellValue call(const VoFunction& function, const Line& line);
    void help(const Line& line) const;
    void helpOnAll() const;
    void helpOn(const VoFunction& function) const;
    void set(const Line& line) const;
    void showValue(const VoString& name) const;
    const Statement* statement(const VoString& name) const;

    VoDirectoryPath m_folder;  // of the script that is running; null outside of scripts
    std::size_t m_depth = 0;   // of scripts
    bool m_isSourcing = false; // whether a line asked for the script that is running
};

} // namespace vo::detail
