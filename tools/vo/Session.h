#pragma once

#include "Arguments.h"
#include "Console.h"

#include <Threading/VoStopFlag.h>

namespace vo::tool {

/// What a subcommand works with: its arguments, where it writes to, and the wish to stop.
class Session
{
public:
    const Arguments& arguments;
    Console& console;
    VoStopFlag stop;
};

} // namespace vo::tool
