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

void Append(InstallationPlan& plan, const FileDifference& difference, const VoFilePath& path,
            const VoDownloadSize& size)
{
    plan.files.pushBack({difference.type(), difference.fileID(), path, Bytes(size)});
    std::uint64_t& bytes = IsWritten(difference) ? plan.bytesToWrite : plan.bytesToRemove;
    bytes = SaturatedSum(bytes, Bytes(size));
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

void AddFiles(InstallationPlan& plan, const PackageDifferences& differences, const InstalledPackageListing* installed,
              const AdvertisedPackageListing& advertised)
{
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (IsWritten(difference)) {
            const AdvertisedFileListing* file = advertised.file(difference.fileID());
            if (!file)
                continue;
            Append(plan, difference, file->target(), file->size());
            ++(difference.type() == FileDifference::Added ? plan.addedFiles : plan.modifiedFiles);
        } else if (const InstalledFileListing* file = installed ? installed->file(difference.fileID()) : nullptr) {
            Append(plan, difference, file->path(), file->size());
            ++plan.removedFiles;
        }
    }
    plan.unchangedFiles =
        advertised.files().size() - std::min(advertised.files().size(), plan.addedFiles + plan.modifiedFiles);
}

} // namespace

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
    InstallationPlan plan = PlanFiles(differences, installed, advertised);
    PlanFetching(plan, Listings(ChunkUses(differences, advertised)));
    return plan;
}

InstallationPlan PlanFiles(const PackageDifferences& differences, const InstalledPackageListing* installed,
                           const AdvertisedPackageListing& advertised)
{
    InstallationPlan plan;
    plan.packageID = advertised.packageID();
    plan.versionID = advertised.versionID();
    plan.name = advertised.name();
    plan.version = advertised.version();
    AddFiles(plan, differences, installed, advertised);
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
