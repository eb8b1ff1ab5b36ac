#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Updater/VerificationReport.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/LinkPlaces.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace vo::updater {
class InstalledPackageListing;
}

namespace vo::updater::detail {

class EventReport;
class FileOwners;

/// A file that is not as it ought to be.
struct FileFinding
{
    std::size_t number;
    FileState state;
};

/// Examines installed files, following links, and tells of the beginning, of each finding and of the progress. Returns
/// the findings; the caller reports the end with ReportVerified. Throws as ExamineAll.
VoDeque<FileFinding> VerifyFiles(std::size_t count, const std::function<ExpectedFile(std::size_t)>& expected,
                                 const EventReport& report, const VoStopFlag& stop);
/// Tells of the end of it.
void ReportVerified(bool isIntact, const EventReport& report);

/// What a release holds besides the bytes of its files, at its places.
struct AttributePlaces
{
    std::vector<LinkPlace> links;
    std::vector<VoFilePath> programs;
    std::vector<VoDirectoryPath> folders;
};

/// Looks at all of it, and tells of each finding; adds them to `report`. A program that is not there is no finding of
/// this.
void VerifyAttributes(const AttributePlaces& places, VerificationReport& report, const EventReport& events,
                      const VoStopFlag& stop);

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
