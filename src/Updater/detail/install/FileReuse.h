#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>

#include <functional>
#include <unordered_map>
#include <vector>

namespace vo::updater::detail {

/// Installed files to copy from, by the IDs of the added files that get their bytes.
using ReusedFiles = std::unordered_map<VoUUID, VoFilePath>;

/// For files that an update adds, an installed file with the same bytes. Such a file lies inside the installation
/// directory that `installed` names, has been read to see that it has the bytes, and is not in the way of a directory
/// or file of the new release, because it would be gone when it is needed; `otherPlaces` are those of its links and
/// folders. `placeOf` tells where a file will be installed.
VOCORE_PRIVATE_EXPORT ReusedFiles FindReusableFiles(
    const PackageDifferences& differences, const InstalledPackageListing& installed,
    const AdvertisedPackageListing& advertised, const std::function<VoFilePath(const AdvertisedFileListing&)>& placeOf,
    const std::vector<VoFilePath>& otherPlaces = {});

} // namespace vo::updater::detail
