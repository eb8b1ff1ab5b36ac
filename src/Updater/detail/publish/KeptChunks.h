#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackageListing.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>

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
    /// The files of the earlier release that have not changed, by their targets.
    using UnchangedFiles = std::map<VoFilePath, const AdvertisedFileListing*>;

    KeptChunks() = default; ///< None.
    /// Of a release whose definition lies in `directory`; `capacity` is that of a new chunk. Reads the files of the
    /// chunks: one that is not there, or has not the digest that the definition lists, is not kept.
    KeptChunks(const AdvertisedPackageListing& release, const VoDirectoryPath& directory,
               const UnchangedFiles& unchanged, std::uint64_t capacity);

    /// Null for a chunk that is not kept.
    const Chunk* find(const VoUUID& id) const;
    /// The earlier listing of the unchanged file at a target, when a part of it is in kept chunks; else null.
    const AdvertisedFileListing* file(const VoFilePath& target) const;

private:
    std::unordered_map<VoUUID, Chunk> m_chunks;
    AdvertisedPackageListing m_files;                           // in one piece: nearly all of the release
    std::unordered_multimap<std::size_t, std::size_t> m_numbers; // of those, by the hashes of their targets
};

} // namespace vo::updater::detail
