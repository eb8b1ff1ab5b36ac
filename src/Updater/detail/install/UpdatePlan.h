#pragma once

// What an update needs, decided from two listings without touching a file: the installer carries a plan out, and the
// tool shows it before a byte moves.

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstallationPlan.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>
#include <Updater/detail/documents/FileTable.h>

#include <cstdint>
#include <optional>
#include <vector>

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

/// One of what may be hundreds of thousands of differences: ID, path and length of the file are in a listing.
struct FileChange
{
    FileDifference::Type type;
    FileTable::Number number; ///< In the advert; of a removed file in the installed listing.
};

/// Differences by the numbers of the files. Those that their listing does not have are left out.
std::vector<FileChange> ChangesOf(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                  const AdvertisedPackageListing& advertised);

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

/// What the files of such a plan come to, without files and chunks.
InstallationPlan PlanTotals(const PackageDifferences& differences, const InstalledPackageListing* installed,
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

/// Such differences; as a rule no file is left out, and they are those that were given, which must outlive it.
class Remaining
{
public:
    template <typename Files>
    Remaining(const PackageDifferences& differences, const Files& files)
        : m_all(differences)
    {
        if (!files.empty())
            m_some = Without(differences, files);
    }
    Remaining(const Remaining&) = delete;
    Remaining& operator=(const Remaining&) = delete;

    const PackageDifferences& operator*() const { return m_some ? *m_some : m_all; }

private:
    const PackageDifferences& m_all;
    std::optional<PackageDifferences> m_some;
};

} // namespace vo::updater::detail
