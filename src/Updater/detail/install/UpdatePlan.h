#pragma once

// What an update needs, decided from two listings without touching a file: the installer carries a plan out, and the
// tool shows it before a byte moves.

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>

#include <cstdint>

namespace vo::updater::detail {

/// One step of an update, in the order of the differences.
struct PlannedFile
{
    FileDifference::Type type;
    VoUUID id;
    /// The advertised target; for a removed file the path where it was installed.
    VoFilePath path;
    /// Bytes of the new content; for a removed file those of the old one.
    std::uint64_t bytes;
};

/// A chunk that an update needs.
struct PlannedChunk
{
    ChunkListing listing;
    /// References that the added and modified files make to it: after so many pieces it is no longer needed.
    std::uint64_t references;
    /// The uncompressed bytes that the advert uses of it: the largest offset + length of any reference of any file.
    std::uint64_t extent;
};

/// What an update does.
struct UpdatePlan
{
    VoDeque<PlannedFile> files;        ///< In the order of the differences.
    VoDeque<PlannedChunk> chunks;      ///< In the order of the advert, each once.
    std::uint64_t added = 0;           ///< Number of files to add.
    std::uint64_t modified = 0;        ///< Number of files to rewrite.
    std::uint64_t removed = 0;         ///< Number of files to remove.
    std::uint64_t unchanged = 0;       ///< Number of advertised files that cost nothing.
    std::uint64_t bytesToWrite = 0;    ///< Content of the added and modified files.
    std::uint64_t bytesToRemove = 0;   ///< Content of the removed files.
    std::uint64_t bytesToTransfer = 0; ///< Sizes of the needed chunk files.

    bool isEmpty() const { return files.isEmpty(); } ///< Whether there is nothing to do.
};

/// Plans the way from `installed` (null when nothing is installed: then every file is added) to `advertised`. Throws as
/// AbstractPackageListing::compare. Unknown (negative) sizes count as 0; sums saturate.
VOCORE_PRIVATE_EXPORT UpdatePlan PlanUpdate(const InstalledPackageListing* installed,
                                            const AdvertisedPackageListing& advertised);
/// Plans given differences, for example with files added that are missing on disk. A difference that names a file which
/// its listing does not have is left out.
VOCORE_PRIVATE_EXPORT UpdatePlan PlanUpdate(const PackageDifferences& differences,
                                            const InstalledPackageListing* installed,
                                            const AdvertisedPackageListing& advertised);

/// The differences from `installed` (null when nothing is installed) to `advertised`.
VOCORE_PRIVATE_EXPORT PackageDifferences Differences(const InstalledPackageListing* installed,
                                                     const AdvertisedPackageListing& advertised);

/// The chunks that the added and modified files refer to, each once, in the order of the advert.
VOCORE_PRIVATE_EXPORT VoDeque<ChunkListing> RequiredChunks(const PackageDifferences& differences,
                                                           const AdvertisedPackageListing& advertised);

} // namespace vo::updater::detail
