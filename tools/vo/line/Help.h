#pragma once

#include <vo/line/ExitCode.h>

#include <Core/VoString.h>

namespace vo::tool {

struct Command;

/// What the program is, its commands, common options and exit codes.
VoString OverviewText();
/// How one command is used.
VoString CommandText(const Command& command);

/// Prints the help of a command, or the overview when it is null.
ExitCode PrintHelp(const Command* command);
/// Prints the program's name and version.
ExitCode PrintVersion();

} // namespace vo::tool
