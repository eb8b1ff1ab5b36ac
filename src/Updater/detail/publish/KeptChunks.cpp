#include <Updater/detail/publish/KeptChunks.h>

#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/FileCheck.h>

#include <algorithm>
#include <vector>

namespace vo::updater::detail {

namespace {

constexpr std::uint64_t SmallShare = 16;

// What a chunk holds, as far as the files of its release tell.
struct ChunkContent
{
    std::uint64_t extent = 0;
    std::uint64_t unchanged = 0;
};

bool IsWorthKeeping(const ChunkContent& content, std::uint64_t capacity)
{
    return content.unchanged >= std::max<std::uint64_t>(capacity / SmallShare, 1) && content.extent <= capacity &&
           content.unchanged <= content.extent && content.extent - content.unchanged <= content.extent / SmallShare;
}

std::unordered_map<VoUUID, ChunkContent> ChunkContents(const AdvertisedPackageListing& release,
                                                       const KeptChunks::UnchangedFiles& unchanged)
{
    std::unordered_map<VoUUID, ChunkContent> contents;
    for (const AdvertisedFileListing& file : release.files()) {
        const auto known = unchanged.find(file.target());
        const bool isUnchanged = known != unchanged.end() && known->second == &file;
        for (const ChunkReferenceListing& piece : file.chunks()) {
            ChunkContent& content = contents[piece.chunkID()];
            content.extent = std::max(content.extent, piece.offset() + piece.length());
            content.unchanged += isUnchanged ? piece.length() : 0;
        }
    }
    return contents;
}

} // namespace

KeptChunks::KeptChunks(const AdvertisedPackageListing& release, const VoDirectoryPath& directory,
                       const UnchangedFiles& unchanged, std::uint64_t capacity)
{
    ValidatePackage(release);
    const auto contents = ChunkContents(release, unchanged);
    std::vector<const ChunkListing*> chunks;
    for (const ChunkListing& chunk : release.chunks()) {
        const auto content = contents.find(chunk.id());
        if (content != contents.end() && IsWorthKeeping(content->second, capacity))
            chunks.push_back(&chunk);
    }
    const auto path = [&](std::size_t i) { return directory.appended(chunks[i]->path()); };
    const auto expected = [&](std::size_t i) { return Expected(path(i), *chunks[i]); };
    ExamineAll(chunks.size(), expected, Links::Kept, VoStopFlag(), [&](std::size_t i, FileState state) {
        if (state == FileState::Sound)
            m_chunks.emplace(chunks[i]->id(), Chunk{*chunks[i], path(i)});
    });
    for (const auto& [target, listing] : unchanged) {
        const auto isKept = [this](const ChunkReferenceListing& piece) { return find(piece.chunkID()) != nullptr; };
        const VoDeque<ChunkReferenceListing> pieces = listing->chunks();
        if (std::any_of(pieces.begin(), pieces.end(), isKept))
            m_files.emplace(target, *listing);
    }
}

const KeptChunks::Chunk* KeptChunks::find(const VoUUID& id) const
{
    const auto found = m_chunks.find(id);
    return found == m_chunks.end() ? nullptr : &found->second;
}

const AdvertisedFileListing* KeptChunks::file(const VoFilePath& target) const
{
    const auto found = m_files.find(target);
    return found == m_files.end() ? nullptr : &found->second;
}

} // namespace vo::updater::detail
