#pragma once

#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/files/LinkPlaces.h>

#include <unordered_set>
#include <vector>

namespace vo::updater {
class AdvertisedFileListing;
class AdvertisedPackageListing;
class InstalledPackageListing;
struct InstallationPlan;
} // namespace vo::updater

namespace vo::updater::detail {

class FileOwners;
struct FileClaims;

/// What an update needs besides the bytes of files, decided from two listings and a look at the disk.
struct AttributePlan
{
    std::vector<LinkPlace> links;           ///< Of the release.
    std::vector<bool> isMade;               ///< Whether each of them has to be made: it is not in place.
    std::vector<VoFilePath> removed;        ///< Links of the old release that go.
    std::unordered_set<VoUUID> programs;    ///< Files that are executable in the release.
    bool marksFiles = false;                ///< Whether one of the releases has some: no other file is one then.
    std::unordered_set<VoUUID> behindLinks; ///< Files in the place of what old links show that go.
    std::vector<VoDirectoryPath> folders;   ///< Of the release, in which nothing lies.

    /// Where links and folders stand that no file may be copied from below.
    std::vector<VoFilePath> places() const;
};

/// `installed` is the release before, or null. The advert has been checked. Where nobody knows what the release holds
/// besides its files, only the links of the old one are looked at.
/// @throws VoFileException when the system does not let one look
AttributePlan PlanAttributes(const InstalledPackageListing* installed, const AdvertisedPackageListing& advertised,
                             const VoDirectoryPath& directory);

/// Adds to the claims what stands in the places of links that have to be made.
void ClaimLinks(const AttributePlan& plan, const InstalledPackageListing* installed, FileOwners& owners,
                FileClaims& claims);

/// Whether a file at its place in the directory is executable and ought not to be, or the other way round. Throws as PlanAttributes.
bool IsMarkedWrongly(const AttributePlan& plan, const AdvertisedFileListing& file, const VoDirectoryPath& directory);

/// Puts what is made and removed into the plan that people are shown.
void ShowAttributes(const AttributePlan& attributes, InstallationPlan& plan);

} // namespace vo::updater::detail
