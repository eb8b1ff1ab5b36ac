#pragma once

#include <vo/line/Command.h>
#include <vo/release/ReleaseChoice.h>

#include <FileSystem/VoDirectoryPath.h>
#include <Updater/InstallationOptions.h>
#include <Updater/InstallationPlan.h>
#include <Updater/PackageSources.h>

#include <vector>

namespace vo::tool {

class Session;

/// What "vo plan" and "vo install" have in common: the release, where it goes and what that takes.
struct InstallJob
{
    VoLocation definition;                                  ///< Of the release.
    VoLocation declarations{};                              ///< As in ChosenRelease.
    VoUniquePtr<updater::AdvertisedPackageListing> package; ///< As it was read there, once.
    VoDirectoryPath directory;
    updater::InstallationPlan plan;
    std::shared_ptr<const updater::ReleaseProof> proof{};  ///< As in ChosenRelease.
    std::vector<std::pair<VoVersion, VoString>> refused{}; ///< As in ChosenRelease.
    bool examinesAll = false;                              ///< Whether every installed file is read at the end.
};

/// The options that name the release and the folder, for both commands.
std::vector<Option> InstallOptions();
/// That of ShowPlan().
Option AllOption();

/// How the tool installs: files that have only moved are copied, and what the command line does not allow is refused
/// under the lock as well.
updater::InstallationOptions OptionsOfInstalling(const Session& session, const InstallJob& job);

/// Reads the command line and plans. The folder of an installed package need not be named again. Throws what planning
/// throws for a release that is refused.
InstallJob PrepareInstall(const Session& session);

/// The files are listed before. A file of another package is never allowed.
/// @throws CommandError with ExitCode::Unsafe when the release would take the place of something that the command line
/// does not allow it to replace: a newer release, a package in another folder or from another place, a file that
/// belongs to no package
void RequireAllowed(const Session& session, const InstallJob& job);

/// @{ Remembers where the release came from, also of one that was installed before from elsewhere, or by a run that was
/// killed before it could.
void RecordSource(const VoUUID& packageID, updater::PackageSource source);
void RecordSource(const InstallJob& job);
/// @}

/// The same of a release that is staged, unless what is installed came from another place: which of the two counts is
/// decided by the commit.
void RecordStagedSource(const InstallJob& job);

/// Installs, showing progress, and remembers where the release came from. Returns whether the check of the installed
/// files at the end found them right.
/// @throws CommandError also when what was installed could not be put on record
bool CarryOut(Session& session, InstallJob& job);

/// Shows the plan, on a terminal what fits there unless --all is given; ExitCode::NothingToDo when there is nothing to
/// do.
ExitCode ShowPlan(Session& session, const InstallJob& job);

} // namespace vo::tool
