#include <Updater/detail/install/PatchChoice.h>

#include <Download/VoDownloadSize.h>
#include <Updater/detail/install/UpdatePlan.h>

#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

// The chunks that are fetched, as files go over from patches to chunks.
class Choice
{
public:
    Choice(ChosenPatches fitting, const PackageDifferences& differences, const AdvertisedPackageListing& advertised)
        : m_chosen(std::move(fitting))
        , m_advertised(advertised)
    {
        for (const FileDifference& difference : differences.fileDifferences()) {
            const AdvertisedFileListing* file =
                difference.type() == FileDifference::Removed ? nullptr : advertised.file(difference.fileID());
            if (file)
                add(*file);
        }
    }

    // Where the missing chunks of a file cost no more than the patches that they make needless, they are fetched. That
    // may let others follow, which share chunks with it.
    ChosenPatches cheapest()
    {
        const std::uint64_t all = bytesOf(m_all);
        for (bool isChanged = true; isChanged;) {
            isChanged = false;
            for (const AdvertisedFileListing* file : m_files)
                isChanged = (m_chosen.count(file->id()) > 0 && giveUp(*file)) || isChanged;
        }
        std::uint64_t bytes = bytesOf(m_fetched);
        for (const auto& [id, patch] : m_chosen)
            bytes += patch->size;
        return bytes < all ? m_chosen : ChosenPatches();
    }

private:
    using Chunks = std::unordered_set<VoUUID>;

    void add(const AdvertisedFileListing& file)
    {
        const bool isPatched = m_chosen.count(file.id()) > 0;
        if (isPatched)
            m_files.push_back(&file);
        for (const ChunkReferenceListing& piece : file.chunks()) {
            m_all.insert(piece.chunkID());
            if (isPatched)
                m_users[piece.chunkID()].push_back(&file);
            else
                m_fetched.insert(piece.chunkID());
        }
    }

    bool isFetched(const AdvertisedFileListing& file, const Chunks& besides) const
    {
        const VoDeque<ChunkReferenceListing> pieces = file.chunks();
        return std::all_of(pieces.begin(), pieces.end(), [&](const ChunkReferenceListing& piece) {
            return m_fetched.count(piece.chunkID()) > 0 || besides.count(piece.chunkID()) > 0;
        });
    }

    bool giveUp(const AdvertisedFileListing& file)
    {
        Chunks missing;
        for (const ChunkReferenceListing& piece : file.chunks()) {
            if (m_fetched.count(piece.chunkID()) == 0)
                missing.insert(piece.chunkID());
        }
        std::unordered_set<const AdvertisedFileListing*> users = {&file};
        for (const VoUUID& chunk : missing)
            users.insert(m_users[chunk].begin(), m_users[chunk].end());
        std::uint64_t saved = 0;
        std::vector<VoUUID> needless;
        for (const AdvertisedFileListing* user : users) {
            const auto patch = m_chosen.find(user->id());
            if (patch == m_chosen.end() || !isFetched(*user, missing))
                continue;
            saved += patch->second->size;
            needless.push_back(user->id());
        }
        if (saved < bytesOf(missing))
            return false;
        m_fetched.insert(missing.begin(), missing.end());
        for (const VoUUID& id : needless)
            m_chosen.erase(id);
        return true;
    }

    std::uint64_t bytesOf(const Chunks& chunks) const
    {
        VoDeque<ChunkListing> listings;
        for (const VoUUID& id : chunks) {
            if (const ChunkListing* chunk = m_advertised.chunk(id))
                listings.pushBack(*chunk);
        }
        return BytesOf(listings);
    }

    ChosenPatches m_chosen;
    const AdvertisedPackageListing& m_advertised;
    std::vector<const AdvertisedFileListing*> m_files;                             // those with a patch
    std::unordered_map<VoUUID, std::vector<const AdvertisedFileListing*>> m_users; // of each chunk, among these
    Chunks m_fetched;
    Chunks m_all; // what is fetched without patches
};

} // namespace

ChosenPatches FittingPatches(const PackageDifferences& differences, const AdvertisedPackageListing& advertised,
                             const FileBefore& before)
{
    ChosenPatches fitting;
    if (!advertised.patches())
        return fitting;
    std::unordered_multimap<VoUUID, const ReleasePatches::Patch*> known;
    for (const ReleasePatches::Patch& patch : advertised.patches()->patches)
        known.emplace(patch.fileID, &patch);
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (difference.type() != FileDifference::Modified || known.count(difference.fileID()) == 0)
            continue;
        const AbstractFileListing* old = before(difference.fileID());
        const AdvertisedFileListing* file = old ? advertised.file(difference.fileID()) : nullptr;
        const auto [first, last] = known.equal_range(difference.fileID());
        for (auto entry = first; file && entry != last; ++entry) {
            const ReleasePatches::Patch& patch = *entry->second;
            const bool fits = patch.before.isOf(*old) && patch.after.isOf(*file);
            const auto best = fitting.find(patch.fileID);
            if (fits && (best == fitting.end() || patch.size < best->second->size))
                fitting[patch.fileID] = &patch;
        }
    }
    return fitting;
}

ChosenPatches CheapestPatches(ChosenPatches fitting, const PackageDifferences& differences,
                              const AdvertisedPackageListing& advertised)
{
    if (fitting.empty())
        return fitting;
    return Choice(std::move(fitting), differences, advertised).cheapest();
}

VoDeque<ChunkListing> PatchFiles(const ChosenPatches& chosen, const PackageDifferences& differences)
{
    VoDeque<ChunkListing> files;
    for (const FileDifference& difference : differences.fileDifferences()) {
        const auto patch = chosen.find(difference.fileID());
        if (patch != chosen.end())
            files.pushBack(patch->second->file());
    }
    return files;
}

} // namespace vo::updater::detail
