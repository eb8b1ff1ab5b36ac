#pragma once

// Which files of an update are made by patches. Pure: nothing but listings is looked at.

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/PackageDifferences.h>
#include <Updater/ReleasePatches.h>

#include <functional>
#include <unordered_map>

namespace vo::updater::detail {

/// Patches by the IDs of the files that they make.
using ChosenPatches = std::unordered_map<VoUUID, const ReleasePatches::Patch*>;
/// The listing of a file as it is now; null when there is none, or when it must not be relied on.
using FileBefore = std::function<const AbstractFileListing*(const VoUUID& fileID)>;

/// The modified files for which there is a patch, each with its smallest.
ChosenPatches FittingPatches(const PackageDifferences& differences, const AdvertisedPackageListing& advertised,
                             const FileBefore& before);
/// Those of them that make an update fetch less, where chunks are needed for all other added and modified files of the
/// differences: patches for all, chunks for all, or a mixture, whichever is fewer bytes.
VOCORE_PRIVATE_EXPORT ChosenPatches CheapestPatches(ChosenPatches fitting, const PackageDifferences& differences,
                                                    const AdvertisedPackageListing& advertised);

/// The patch files of a choice, in the order of the differences.
VoDeque<ChunkListing> PatchFiles(const ChosenPatches& chosen, const PackageDifferences& differences);

} // namespace vo::updater::detail
