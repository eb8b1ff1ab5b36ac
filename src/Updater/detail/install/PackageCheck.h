#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <Updater/VerificationReport.h>

namespace vo::updater {
class InstalledPackageListing;
}

namespace vo::updater::detail {

class EventReport;
class FileOwners;

/// What a check found, and the IDs of the files that a repair has to write.
struct PackageCheck
{
    VerificationReport report;
    VoDeque<VoUUID> damaged;
};

/// Looks at every installed file of a package, and at what else lies in the directories made for it that no other
/// package owns. Changes nothing. Progress and findings go to `events`.
/// @throws VoUserCancelledException when the flag is raised
PackageCheck CheckPackage(const InstalledPackageListing& listing, FileOwners& owners, const VoStopFlag& stop,
                          const EventReport& events);

} // namespace vo::updater::detail
