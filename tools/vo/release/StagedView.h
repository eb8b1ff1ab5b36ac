#pragma once

#include <Updater/StagedInstallation.h>

namespace vo::tool {

class Console;

/// A row of a list of staged releases.
void ShowStaged(Console& console, const char* list, const updater::StagedInstallation& staged);

} // namespace vo::tool
