#pragma once

#include <Signing/Signature.h>

#include <QtCore/QStringList>

#include <cstddef>
#include <optional>
#include <string>

namespace vo::tool {

/// Makes standard input and output carry bytes as they are, and a console show UTF-8, where that is not so from the
/// beginning. Called once, before anything is read or written.
void PrepareTerminal();

/// Whether standard error is shown to a person, so that a line may be drawn over.
bool ErrorOutputIsTerminal();

/// Whether standard input and output are a person's.
bool InputIsTerminal();

/// Columns of the terminal behind standard error; 80 when it cannot be told.
std::size_t TerminalWidth();

/// What standard output is shown in.
struct OutputShape
{
    std::size_t columns = 80;          ///< 80 when it cannot be told.
    std::optional<std::size_t> rows{}; ///< None where everything may be long: no terminal.
};
OutputShape OutputSize();

/// @{ Whether a person sees the output on something that shows colours, and has not said otherwise (NO_COLOR). The
/// terminal is made to show them where it must be told to.
bool OutputShowsColours();
bool ErrorOutputShowsColours();
/// @}

/// A line that is typed at the terminal after a prompt, and not shown there; none when there is no terminal.
std::optional<signing::Passphrase> ReadSecretLine(const std::string& prompt);

/// The program's arguments without its own name. Texts are UTF-8 whatever the locale says: file names are bytes, and
/// the library's paths are UTF-8.
QStringList ProgramArguments(int argc, char** argv);

} // namespace vo::tool
