#include <Updater/detail/install/UpdatePlan.h>

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <Updater/detail/documents/ListedFile.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>

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

void Count(InstallationPlan& plan, FileDifference::Type type, const VoDownloadSize& size)
{
    const bool isRemoved = type == FileDifference::Removed;
    std::uint64_t& bytes = isRemoved ? plan.bytesToRemove : plan.bytesToWrite;
    bytes = SaturatedSum(bytes, Bytes(size));
    ++(isRemoved ? plan.removedFiles : type == FileDifference::Added ? plan.addedFiles : plan.modifiedFiles);
}

// Numbers by chunk ID. The views are of IDs in the listings that are being planned.
using ChunkNumbers = std::unordered_map<std::string_view, std::uint64_t>;

std::string_view Key(const VoUUID& id)
{
    return id.toString().toStdString();
}

// How often the added and modified files refer to each chunk.
ChunkNumbers CountReferences(const PackageDifferences& differences, const AdvertisedPackageListing& advertised)
{
    ChunkNumbers references;
    for (const FileDifference& difference : differences.fileDifferences()) {
        const AdvertisedFileListing* file = IsWritten(difference) ? advertised.file(difference.fileID()) : nullptr;
        if (!file)
            continue;
        const ListedFile listed(*file);
        for (const FileTable::Piece& piece : listed.pieces())
            ++references[listed.table->chunkIDs()[piece.chunk]];
    }
    return references;
}

ChunkNumbers Extents(const AdvertisedPackageListing& advertised)
{
    ChunkNumbers extents;
    for (const AdvertisedFileListing& file : advertised.files()) {
        const ListedFile listed(file);
        for (const FileTable::Piece& piece : listed.pieces()) {
            std::uint64_t& extent = extents[listed.table->chunkIDs()[piece.chunk]];
            extent = std::max(extent, SaturatedSum(piece.offset, piece.length));
        }
    }
    return extents;
}

// Hands on each file that its listing has: the difference, where it is or will be, and its length.
template <typename Take>
void ForEachFile(const PackageDifferences& differences, const InstalledPackageListing* installed,
                 const AdvertisedPackageListing& advertised, Take take)
{
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (IsWritten(difference)) {
            if (const AdvertisedFileListing* file = advertised.file(difference.fileID()))
                take(difference, file->target(), file->size());
        } else if (const InstalledFileListing* file = installed ? installed->file(difference.fileID()) : nullptr) {
            take(difference, file->path(), file->size());
        }
    }
}

} // namespace

std::vector<FileChange> ChangesOf(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                  const AdvertisedPackageListing& advertised)
{
    const FileTable& records = installed ? TableOf(installed->files()) : NoFiles();
    const FileTable& adverts = TableOf(advertised.files());
    std::vector<FileChange> changes;
    changes.reserve(differences.fileDifferences().size());
    for (const FileDifference& difference : differences.fileDifferences()) {
        const FileTable::Number number = (IsWritten(difference) ? adverts : records).find(difference.fileID());
        if (number != FileTable::None)
            changes.push_back({difference.type(), number});
    }
    return changes;
}

PackageDifferences Differences(const InstalledPackageListing* installed, const AdvertisedPackageListing& advertised)
{
    if (installed)
        return std::move(*installed->compare(advertised));
    return std::move(*InstalledPackageListing(advertised, VoDirectoryPath()).compare(advertised));
}

InstallationPlan PlanUpdate(const InstalledPackageListing* installed, const AdvertisedPackageListing& advertised)
{
    return PlanUpdate(Differences(installed, advertised), installed, advertised);
}

InstallationPlan PlanUpdate(const PackageDifferences& differences, const InstalledPackageListing* installed,
                            const AdvertisedPackageListing& advertised)
{
    InstallationPlan plan = PlanTotals(differences, installed, advertised);
    ForEachFile(differences, installed, advertised,
                [&](const FileDifference& difference, const VoFilePath& path, const VoDownloadSize& size) {
                    plan.files.pushBack({difference.type(), difference.fileID(), path, Bytes(size)});
                });
    PlanFetching(plan, Listings(ChunkUses(differences, advertised)));
    return plan;
}

InstallationPlan PlanTotals(const PackageDifferences& differences, const InstalledPackageListing* installed,
                            const AdvertisedPackageListing& advertised)
{
    InstallationPlan plan;
    plan.packageID = advertised.packageID();
    plan.versionID = advertised.versionID();
    plan.name = advertised.name();
    plan.version = advertised.version();
    ForEachFile(differences, installed, advertised,
                [&](const FileDifference& difference, const VoFilePath&, const VoDownloadSize& size) {
                    Count(plan, difference.type(), size);
                });
    plan.unchangedFiles =
        advertised.files().size() - std::min(advertised.files().size(), plan.addedFiles + plan.modifiedFiles);
    return plan;
}

VoDeque<ChunkUse> ChunkUses(const PackageDifferences& differences, const AdvertisedPackageListing& advertised)
{
    ChunkNumbers references = CountReferences(differences, advertised);
    const ChunkNumbers extents = Extents(advertised);
    VoDeque<ChunkUse> uses;
    for (const ChunkListing& chunk : advertised.chunks()) {
        const auto count = references.find(Key(chunk.id()));
        if (count == references.end())
            continue;
        uses.pushBack({chunk, count->second, extents.at(count->first)});
        references.erase(count); // each once, also when the advert lists it twice
    }
    return uses;
}

VoDeque<ChunkListing> Listings(const VoDeque<ChunkUse>& chunks)
{
    VoDeque<ChunkListing> result;
    for (const ChunkUse& chunk : chunks)
        result.pushBack(chunk.listing);
    return result;
}

std::uint64_t BytesOf(const VoDeque<ChunkListing>& chunks)
{
    std::uint64_t bytes = 0;
    for (const ChunkListing& chunk : chunks)
        bytes = SaturatedSum(bytes, Bytes(chunk.size()));
    return bytes;
}

void PlanFetching(InstallationPlan& plan, VoDeque<ChunkListing> chunks, VoDeque<ChunkListing> patches)
{
    plan.bytesToFetch = SaturatedSum(BytesOf(chunks), BytesOf(patches));
    plan.chunks = std::move(chunks);
    plan.patches = std::move(patches);
}

} // namespace vo::updater::detail
