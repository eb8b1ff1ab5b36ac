#include <Updater/detail/publish/KeptChunks.h>

#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/FileCheck.h>

#include <algorithm>
#include <string>
#include <utility>

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

// By the numbers of the chunks in the table.
std::vector<ChunkContent> ChunkContents(const FileTable& files, const std::vector<bool>& unchanged)
{
    std::vector<ChunkContent> contents(files.chunkIDs().size());
    for (FileTable::Number file = 0; file < files.size(); ++file) {
        for (const FileTable::Piece& piece : files.pieces(file)) {
            ChunkContent& content = contents[piece.chunk];
            content.extent = std::max(content.extent, piece.offset + piece.length);
            content.unchanged += unchanged[file] ? piece.length : 0;
        }
    }
    return contents;
}

} // namespace

KeptChunks::KeptChunks(std::shared_ptr<const IndexedRelease> release, const VoDirectoryPath& directory,
                       const std::vector<bool>& unchanged, std::uint64_t capacity)
    : m_release(std::move(release))
{
    ValidatePackage(m_release->listing());
    const FileTable& files = m_release->files();
    const std::vector<ChunkContent> contents = ChunkContents(files, unchanged);
    std::vector<const ChunkListing*> chunks;
    for (std::size_t number = 0; number < contents.size(); ++number) {
        const ChunkListing* chunk = m_release->listing().chunk(VoUUID(VoString(files.chunkIDs()[number])));
        if (chunk && IsWorthKeeping(contents[number], capacity))
            chunks.push_back(chunk);
    }
    const auto path = [&](std::size_t i) { return directory.appended(chunks[i]->path()); };
    const auto expected = [&](std::size_t i) { return Expected(path(i), *chunks[i]); };
    ExamineAll(chunks.size(), expected, Links::Kept, VoStopFlag(), [&](std::size_t i, FileState state) {
        if (state == FileState::Sound)
            m_chunks.emplace(chunks[i]->id(), Chunk{*chunks[i], path(i)});
    });
    for (const std::string& id : files.chunkIDs())
        m_byNumber.push_back(find(VoUUID(VoString(id))));
    m_isOfUse.resize(files.size());
    for (FileTable::Number file = 0; file < files.size(); ++file) {
        const FileTable::Pieces pieces = files.pieces(file);
        m_isOfUse[file] = unchanged[file] && std::any_of(pieces.begin(), pieces.end(), [&](const auto& piece) {
                              return m_byNumber[piece.chunk] != nullptr;
                          });
    }
}

const KeptChunks::Chunk* KeptChunks::find(const VoUUID& id) const
{
    const auto found = m_chunks.find(id);
    return found == m_chunks.end() ? nullptr : &found->second;
}

const AdvertisedFileListing* KeptChunks::file(const VoFilePath& target) const
{
    if (!m_release)
        return nullptr;
    const FileTable::Number number = m_release->find(target);
    return number != FileTable::None && m_isOfUse[number] ? &m_release->listing().files()[number] : nullptr;
}

std::vector<const KeptChunks::Chunk*> KeptChunks::chunksOf(const AdvertisedFileListing& file) const
{
    std::vector<const Chunk*> chunks;
    for (const FileTable::Piece& piece : ListedFile(file).pieces()) {
        if (!m_byNumber[piece.chunk])
            return {};
        chunks.push_back(m_byNumber[piece.chunk]);
    }
    return chunks;
}

} // namespace vo::updater::detail
