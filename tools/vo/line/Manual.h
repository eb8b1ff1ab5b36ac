#pragma once

#include <Core/VoString.h>

namespace vo::tool {

struct Command;

/// The manual page of a command, vo-COMMAND(1), or that of the program, vo(1), when it is null: the help in the macros
/// of man(7).
VoString ManualPage(const Command* command);

} // namespace vo::tool
