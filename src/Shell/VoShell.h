#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Shell/VoAbstractShell.h>
#include <Shell/VoFunctionRegistry.h>

#include <cstddef>
#include <functional>
#include <memory>

/// The embedded command shell: it calls the functions of a registry by lines of text.
///
///     table.load results.csv separator=";"   # the name of a parameter, where it is not the next one
///     table.cell $_ 3 "Gain (dB)"            # $_ is the result of the last call
///     set Tolerance 1e-6                     # one of VoGlobalValues; $Tolerance stands for it
///     echo [1, 2, 3] 'as it is: $_'
///     source more.vo                         # relative to this script
///     help table.load
///
/// Words stand apart by blanks. "..." keeps blanks and puts values in, a doubled quote within is one; '...' keeps all
/// as it is. A backslash is itself. $name and ${name} stand for values of their kind, within a word or quotes for their
/// texts; $$ is the sign. [a, b c] is a list. A # at the beginning of a word begins a comment. There are no conditions
/// and no loops on purpose: what needs them is a program's work.
///
/// Used by one thread at a time.
class VOCORE_EXPORT VoShell final : public VoAbstractShell
{
public:
    using Output = std::function<void(const VoString& text)>;        ///< Takes a line for people, without its end.
    using ResultFunction = std::function<void(const VoShellValue&)>; ///< Takes the result of a call.

    /// A shell over a registry, which must outlive it.
    explicit VoShell(Output output = nullptr,
                     const VoAbstractFunctionRegistry& functions = VoFunctionRegistry::Global());
    VoShell(const VoShell&) = delete;
    VoShell& operator=(const VoShell&) = delete;
    ~VoShell() override;

    /// Carries out a line; gives the result of its call, Null when it makes none.
    /// @throws VoUndefinedFunctionException as VoFunctionRegistry::Undefined()
    /// @throws VoInvalidParameterException as VoFunction::call(); "Quote is not closed, at column " + number; "Line is
    /// too long" for one of more than 64 KiB
    /// @throws VoNotFoundException("$" + name + ", at column " + number) for a value that there is not
    VoShellValue run(const VoString& line, const VoStopFlag& stop = VoStopFlag()) override;

    /// Carries out the lines of a text; `name` says what it is in errors. Results go to the function of
    /// setOnResult().
    /// @throws VoScriptException for a line that fails, VoUserCancelledException when `stop` was raised
    void runText(const VoString& text, const VoString& name, const VoStopFlag& stop = VoStopFlag());
    /// The same with a file of at most 16 MiB, in UTF-8.
    /// @throws VoFileNotFoundException, VoCannotOpenFileException, VoIOException when it cannot be read
    /// @throws VoInvalidUseException "Script is too large: " + path
    /// @throws VoStackLimitException for a script in the 32nd script that sources another
    void runScript(const VoFilePath& file, const VoStopFlag& stop = VoStopFlag());

    const VoShellValue& result() const noexcept; ///< $_: the result of the last call that gave one.

    /// What relative paths in lines are relative to; null, as in the beginning: the process's current directory.
    /// @{
    void setDirectory(const VoDirectoryPath& directory);
    const VoDirectoryPath& directory() const noexcept;
    /// @}

    void setOnResult(ResultFunction function); ///< Called with each result of lines of texts and scripts, not Null.

    /// What could stand where somebody is typing.
    struct Completions
    {
        std::size_t start = 0;   ///< Of the word in the line, in bytes.
        VoDeque<VoString> words; ///< What could stand from there to the cursor; those that go on end with "=", or a
                                 ///< separator of folders.
    };
    /// Names of functions for the first word; then values, parameters and files.
    /// @param line what is typed
    /// @param cursor the byte before which it stands; beyond the end it counts as the end
    Completions completions(const VoString& line, std::size_t cursor) const;

private:
    struct Private;

    const std::unique_ptr<Private> m_private;
};
