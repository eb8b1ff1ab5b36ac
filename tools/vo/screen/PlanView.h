#pragma once

#include <FileSystem/VoDirectoryPath.h>
#include <Updater/InstallationPlan.h>

#include <cstddef>
#include <optional>

namespace vo::tool {

class Console;

/// Lists the files of a plan, folder by folder, and its chunks, with ShowClaims() between them. Paths below `directory`
/// are shown relative to it. On a terminal with that many rows, a plan that would not fit there is told by folders.
void ShowPlanSteps(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory,
                   std::optional<std::size_t> rows = std::nullopt);

/// Lists the files on disk that are not the package's own and that the installation meets.
void ShowClaims(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);

/// @{ What is installed over what, and the figures of a plan that is to be, or has been, carried out.
void ShowPlanFigures(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);
void ShowInstalledFigures(Console& console, const updater::InstallationPlan& plan, const VoDirectoryPath& directory);
/// @}

} // namespace vo::tool
