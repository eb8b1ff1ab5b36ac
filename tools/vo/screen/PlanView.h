#pragma once

#include <FileSystem/VoDirectoryPath.h>
#include <Updater/InstallationPlan.h>

namespace vo::tool {

class Console;

/// Lists every file and chunk of a plan, with ShowClaims(). Paths below `directory` are shown relative to it.
void ShowPlanSteps(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);

/// Lists the files on disk that are not the package's own and that the installation meets.
void ShowClaims(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);

/// @{ What is installed over what, and the figures of a plan that is to be, or has been, carried out.
void ShowPlanFigures(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);
void ShowInstalledFigures(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);
/// @}

} // namespace vo::tool
