#include <Updater/UpdatePlan.h>

#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

namespace vo::updater::detail {

namespace {

std::uint64_t SaturatedSum(std::uint64_t a, std::uint64_t b)
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    return a > most - b ? most : a + b;
}

std::uint64_t Bytes(const VoDownloadSize& size)
{
    return static_cast<std::uint64_t>(std::max<std::int64_t>(static_cast<std::int64_t>(size), 0));
}

bool IsWritten(const FileDifference& difference)
{
    return difference.type() == FileDifference::Added || difference.type() == FileDifference::Modified;
}

void Append(UpdatePlan& plan, const FileDifference& difference, const VoFilePath& path, const VoDownloadSize& size)
{
    plan.files.pushBack({difference.type(), difference.fileID(), path, Bytes(size)});
    std::uint64_t& bytes = IsWritten(difference) ? plan.bytesToWrite : plan.bytesToRemove;
    bytes = SaturatedSum(bytes, Bytes(size));
}

// How often the added and modified files refer to each chunk.
using References = std::unordered_map<VoUUID, std::uint64_t>;

References CountReferences(const PackageDifferences& differences, const AdvertisedPackageListing& advertised)
{
    References references;
    for (const FileDifference& difference : differences.fileDifferences()) {
        const AdvertisedFileListing* file = IsWritten(difference) ? advertised.file(difference.fileID()) : nullptr;
        if (!file)
            continue;
        for (const ChunkReferenceListing& piece : file->chunks())
            ++references[piece.chunkID()];
    }
    return references;
}

std::unordered_map<VoUUID, std::uint64_t> Extents(const AdvertisedPackageListing& advertised)
{
    std::unordered_map<VoUUID, std::uint64_t> extents;
    for (const AdvertisedFileListing& file : advertised.files()) {
        for (const ChunkReferenceListing& piece : file.chunks()) {
            std::uint64_t& extent = extents[piece.chunkID()];
            extent = std::max(extent, SaturatedSum(piece.offset(), piece.length()));
        }
    }
    return extents;
}

void PlanFiles(UpdatePlan& plan, const PackageDifferences& differences, const InstalledPackageListing* installed,
               const AdvertisedPackageListing& advertised)
{
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (IsWritten(difference)) {
            const AdvertisedFileListing* file = advertised.file(difference.fileID());
            if (!file)
                continue;
            Append(plan, difference, file->target(), file->size());
            ++(difference.type() == FileDifference::Added ? plan.added : plan.modified);
        } else if (const InstalledFileListing* file = installed ? installed->file(difference.fileID()) : nullptr) {
            Append(plan, difference, file->path(), file->size());
            ++plan.removed;
        }
    }
    plan.unchanged = advertised.files().size() - std::min(advertised.files().size(), plan.added + plan.modified);
}

} // namespace

PackageDifferences Differences(const InstalledPackageListing* installed, const AdvertisedPackageListing& advertised)
{
    if (installed)
        return std::move(*installed->compare(advertised));
    return std::move(*InstalledPackageListing(advertised, VoDirectoryPath()).compare(advertised));
}

VoDeque<ChunkListing> RequiredChunks(const PackageDifferences& differences, const AdvertisedPackageListing& advertised)
{
    References references = CountReferences(differences, advertised);
    VoDeque<ChunkListing> required;
    for (const ChunkListing& chunk : advertised.chunks()) {
        // Erased when found, so that a chunk listed twice is taken once.
        if (references.erase(chunk.id()) != 0)
            required.pushBack(chunk);
    }
    return required;
}

UpdatePlan PlanUpdate(const InstalledPackageListing* installed, const AdvertisedPackageListing& advertised)
{
    return PlanUpdate(Differences(installed, advertised), installed, advertised);
}

UpdatePlan PlanUpdate(const PackageDifferences& differences, const InstalledPackageListing* installed,
                      const AdvertisedPackageListing& advertised)
{
    UpdatePlan plan;
    PlanFiles(plan, differences, installed, advertised);

    const References references = CountReferences(differences, advertised);
    const auto extents = Extents(advertised);
    for (const ChunkListing& chunk : RequiredChunks(differences, advertised)) {
        plan.chunks.pushBack({chunk, references.at(chunk.id()), extents.at(chunk.id())});
        plan.bytesToTransfer = SaturatedSum(plan.bytesToTransfer, Bytes(chunk.size()));
    }
    return plan;
}

} // namespace vo::updater::detail
