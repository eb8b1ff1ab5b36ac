#include <Updater/detail/publish/KeptChunks.h>

#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/FileCheck.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace vo::updater::detail {

namespace {

constexpr std::uint64_t SmallShare = 16;

const std::vector<std::string>& ChunkIDs(const AdvertisedPackageListing& release)
{
    static const auto& none = *new std::vector<std::string>; // outlives all static objects
    return release.files().isEmpty() ? none : ListedFile(release.files().front()).table->chunkIDs();
}

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

// By the numbers of the chunks in the release's table.
std::vector<ChunkContent> ChunkContents(const AdvertisedPackageListing& release,
                                        const KeptChunks::UnchangedFiles& unchanged)
{
    std::vector<bool> isUnchanged(release.files().size());
    for (const auto& [target, listing] : unchanged)
        isUnchanged[ListedFile(*listing).number] = true;
    std::vector<ChunkContent> contents(ChunkIDs(release).size());
    for (const AdvertisedFileListing& listing : release.files()) {
        const ListedFile file(listing);
        for (const FileTable::Piece& piece : file.pieces()) {
            ChunkContent& content = contents[piece.chunk];
            content.extent = std::max(content.extent, piece.offset + piece.length);
            content.unchanged += isUnchanged[file.number] ? piece.length : 0;
        }
    }
    return contents;
}

} // namespace

KeptChunks::KeptChunks(const AdvertisedPackageListing& release, const VoDirectoryPath& directory,
                       const UnchangedFiles& unchanged, std::uint64_t capacity)
{
    ValidatePackage(release);
    const std::vector<ChunkContent> contents = ChunkContents(release, unchanged);
    std::vector<const ChunkListing*> chunks;
    for (std::size_t number = 0; number < contents.size(); ++number) {
        const ChunkListing* chunk = release.chunk(VoUUID(VoString(ChunkIDs(release)[number])));
        if (chunk && IsWorthKeeping(contents[number], capacity))
            chunks.push_back(chunk);
    }
    const auto path = [&](std::size_t i) { return directory.appended(chunks[i]->path()); };
    const auto expected = [&](std::size_t i) { return Expected(path(i), *chunks[i]); };
    ExamineAll(chunks.size(), expected, Links::Kept, VoStopFlag(), [&](std::size_t i, FileState state) {
        if (state == FileState::Sound)
            m_chunks.emplace(chunks[i]->id(), Chunk{*chunks[i], path(i)});
    });
    std::vector<bool> isKept;
    for (const std::string& id : ChunkIDs(release))
        isKept.push_back(find(VoUUID(VoString(id))) != nullptr);
    for (const auto& [target, listing] : unchanged) {
        const FileTable::Pieces pieces = ListedFile(*listing).pieces();
        if (std::none_of(pieces.begin(), pieces.end(), [&](const FileTable::Piece& piece) { return isKept[piece.chunk]; }))
            continue;
        m_numbers.emplace(std::hash<VoFilePath>()(target), m_files.files().size());
        m_files.add(*listing);
    }
}

const KeptChunks::Chunk* KeptChunks::find(const VoUUID& id) const
{
    const auto found = m_chunks.find(id);
    return found == m_chunks.end() ? nullptr : &found->second;
}

const AdvertisedFileListing* KeptChunks::file(const VoFilePath& target) const
{
    const auto [first, last] = m_numbers.equal_range(std::hash<VoFilePath>()(target));
    for (auto number = first; number != last; ++number) {
        const AdvertisedFileListing& listing = m_files.files()[number->second];
        if (listing.target() == target)
            return &listing;
    }
    return nullptr;
}

} // namespace vo::updater::detail
