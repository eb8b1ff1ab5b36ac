#pragma once

#include <vo/line/ExitCode.h>

#include <Core/VoString.h>

#include <cstddef>

namespace vo::tool {

struct Command;
struct Option;
struct Topic;

/// How an option is written, such as "-q, --quiet" and "    --to=FOLDER".
VoString OptionText(const Option& option);
/// What is typed for a command, without "vo ".
VoString UsageText(const Command& command);

/// @{ The pages, in lines of at most `width` bytes: what the program is, its commands and common options; how one
/// command is used; all topics, or the one given.
VoString OverviewText(std::size_t width);
VoString CommandText(const Command& command, std::size_t width);
VoString TopicText(const Topic* topic, std::size_t width);
/// @}

/// Prints a text to standard output.
ExitCode Print(const VoString& text);
/// Prints the help of a command, or the overview when it is null, as wide as the terminal is.
ExitCode PrintHelp(const Command* command);
/// Prints the program's name and version.
ExitCode PrintVersion();

} // namespace vo::tool
