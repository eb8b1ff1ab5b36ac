#pragma once

// What InstalledPackages does, one operation a process and machine at a time; see there. Whatever they announce goes to
// all receivers.

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <Threading/VoReceiver.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/StagedInstallation.h>
#include <Updater/VerificationReport.h>
#include <Updater/detail/install/EventReport.h>

#include <functional>

class VoLocation;
struct VoDownloadPolicy;

namespace vo::updater {
struct InstallationOptions;
}

namespace vo::updater::detail {

/// Receives the messages of all operations.
[[nodiscard]] VoReceiver ConnectToOperations(MessageReceiver callback);

/// Where an operation gets its definition: called when nobody else can change what is installed any more.
using AdvertSource = std::function<VoUniquePtr<AdvertisedPackageListing>()>;

void InstallPackage(const AdvertSource& source, const VoLocation& definition, const VoDirectoryPath& directory,
                    const VoStopFlag& stop, const InstallationOptions& options);
VerificationReport VerifyPackage(const VoUUID& packageID, const VoStopFlag& stop);
VerificationReport RepairPackage(const VoLocation& definition, const VoStopFlag& stop,
                                 const VoDownloadPolicy& downloads);

/// @{ What InstalledPackages does with staged releases. CommitPackage is false when the release was in place already.
StagedInstallation StagePackage(const AdvertSource& source, const VoLocation& definition,
                                const VoDirectoryPath& directory, const VoStopFlag& stop,
                                const InstallationOptions& options);
bool CommitPackage(const VoUUID& packageID, const VoStopFlag& stop);
VoDeque<StagedInstallation> ListStaged();
bool DropStagedPackage(const VoUUID& packageID);
/// @}

void UninstallPackage(const VoUUID& packageID, const VoStopFlag& stop);

} // namespace vo::updater::detail
