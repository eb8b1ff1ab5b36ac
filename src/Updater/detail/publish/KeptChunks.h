#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/IndexedRelease.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace vo::updater::detail {

/// The chunks of an earlier release that the next one takes over as they are, with ID, name and compressed bytes: those
/// whose bytes nearly all belong to files that have not changed. What is left of the others is packed anew.
///
/// A chunk is kept when no more than a sixteenth of it has become useless, so that a first installation fetches at most
/// a sixteenth more than it writes; and when it is no smaller than a sixteenth of a new one, so that releases with
/// small changes do not leave ever more small chunks behind.
class VOCORE_PRIVATE_EXPORT KeptChunks
{
public:
    /// A chunk and the file that holds it.
    struct Chunk
    {
        ChunkListing listing;
        VoFilePath path;
    };
    KeptChunks() = default; ///< None.
    /// Of a release whose definition lies in `directory`; `unchanged` tells of each of its files by number; `capacity`
    /// is that of a new chunk. Reads the files of the chunks: one that is not there, or has not the digest that the
    /// definition lists, is not kept.
    KeptChunks(std::shared_ptr<const IndexedRelease> release, const VoDirectoryPath& directory,
               const std::vector<bool>& unchanged, std::uint64_t capacity);

    /// Null for a chunk that is not kept.
    const Chunk* find(const VoUUID& id) const;
    /// The earlier listing of the unchanged file at a target, when a part of it is in kept chunks; else null.
    const AdvertisedFileListing* file(const VoFilePath& target) const;
    /// The chunks that hold all of such a file, in the order of its bytes; none where some are not kept.
    std::vector<const Chunk*> chunksOf(const AdvertisedFileListing& file) const;

private:
    std::shared_ptr<const IndexedRelease> m_release; // null: nothing is kept
    std::unordered_map<VoUUID, Chunk> m_chunks;
    std::vector<const Chunk*> m_byNumber; // by the numbers that chunks have in the release's table; null: not kept
    std::vector<bool> m_isOfUse;          // of each file, whether it is unchanged and in kept chunks
};

} // namespace vo::updater::detail
