#pragma once

// What an update needs, decided from two listings without touching a file: the installer carries a plan out, and the
// tool shows it before a byte moves.

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstallationPlan.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>

#include <cstdint>

namespace vo::updater::detail {

/// A chunk that an update needs.
struct ChunkUse
{
    ChunkListing listing;
    /// References that the added and modified files make to it: after so many pieces it is no longer needed.
    std::uint64_t references;
    /// The uncompressed bytes that the advert uses of it: the largest offset + length of any reference of any file.
    std::uint64_t extent;
};

/// The differences from `installed` (null when nothing is installed) to `advertised`.
VOCORE_PRIVATE_EXPORT PackageDifferences Differences(const InstalledPackageListing* installed,
                                                     const AdvertisedPackageListing& advertised);

/// Plans the way from `installed` (null when nothing is installed: then every file is added) to `advertised`. Throws as
/// AbstractPackageListing::compare. Unknown (negative) sizes count as 0; sums saturate.
///
/// Nothing but the listings is looked at: the path of an added or modified file is its target, and all chunks are to be
/// fetched.
VOCORE_PRIVATE_EXPORT InstallationPlan PlanUpdate(const InstalledPackageListing* installed,
                                                  const AdvertisedPackageListing& advertised);
/// Plans given differences, for example with files added that are missing on disk. A difference that names a file which
/// its listing does not have is left out.
VOCORE_PRIVATE_EXPORT InstallationPlan PlanUpdate(const PackageDifferences& differences,
                                                  const InstalledPackageListing* installed,
                                                  const AdvertisedPackageListing& advertised);

/// The same without the chunks.
InstallationPlan PlanFiles(const PackageDifferences& differences, const InstalledPackageListing* installed,
                           const AdvertisedPackageListing& advertised);

/// The chunks that the added and modified files refer to, each once, in the order of the advert.
VOCORE_PRIVATE_EXPORT VoDeque<ChunkUse> ChunkUses(const PackageDifferences& differences,
                                                  const AdvertisedPackageListing& advertised);
/// The listings of those.
VoDeque<ChunkListing> Listings(const VoDeque<ChunkUse>& chunks);

/// The bytes of chunk files.
std::uint64_t BytesOf(const VoDeque<ChunkListing>& chunks);

/// Puts chunks and patches to be fetched into a plan, in place of others.
void PlanFetching(InstallationPlan& plan, VoDeque<ChunkListing> chunks, VoDeque<ChunkListing> patches = {});

/// The differences without some files, which are given by their IDs.
template <typename Files>
PackageDifferences Without(const PackageDifferences& differences, const Files& files)
{
    PackageDifferences result(differences.packageID(), differences.sourceVersionID(), differences.targetVersionID());
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (files.count(difference.fileID()) > 0)
            continue;
        switch (difference.type()) {
        case FileDifference::Added:
            result.fileAdded(difference.fileID());
            break;
        case FileDifference::Modified:
            result.fileModified(difference.fileID());
            break;
        case FileDifference::Removed:
            result.fileRemoved(difference.fileID());
            break;
        }
    }
    return result;
}

} // namespace vo::updater::detail
