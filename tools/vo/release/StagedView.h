#pragma once

#include <Updater/StagedInstallation.h>

namespace vo::tool {

class Console;

/// A row of a list of releases that are staged, or were: `state` says which.
void ShowStaged(Console& console, const char* list, const updater::StagedInstallation& staged,
                const char* state = "staged");

} // namespace vo::tool
