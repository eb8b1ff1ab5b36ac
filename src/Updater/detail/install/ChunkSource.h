#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/files/FileInstaller.h>
#include <Updater/detail/install/ChunkCache.h>
#include <Updater/detail/install/StagingDirectory.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vo::updater::detail {

class ChunkReader;
class EventReport;

/// The chunks of one release for the building of its files: gathered in a staging directory, uncompressed ahead of
/// their use, and held as long as they are needed.
class ChunkSource
{
public:
    /// Holds up to `cacheLimit` uncompressed bytes. The arguments that are taken by reference must outlive it.
    ChunkSource(const AdvertisedPackageListing& advert, const StagingDirectory& staging, std::size_t cacheLimit,
                const EventReport& events);
    ~ChunkSource();

    const StagingDirectory& staging() const; ///< Where the chunk files are gathered.
    std::size_t cacheLimit() const;          ///< What may be held, in bytes.

    /// Those of some chunks that are not staged whole. Reads the staged ones.
    VoDeque<ChunkListing> missing(const VoDeque<ChunkListing>& chunks, const VoStopFlag& stop) const;

    /// Announces how often build() will use a chunk altogether: after that it is no longer held.
    void expect(const VoUUID& id, std::uint64_t uses);
    /// Uncompresses chunks ahead, each once and in the order in which they will be used, until endReading().
    void readAhead(std::vector<VoUUID> order);
    void endReading(); ///< Nothing when nothing is read ahead.

    /// The uncompressed bytes of a chunk, good until the next call.
    /// @throws VoNullPointerException ("Failed to find required chunk") for one that is not staged or not in the advert
    /// @throws VoInvalidConversionException for one that cannot be uncompressed to the size it promises
    const VoByteArray& bytes(const VoUUID& id);

    /// Builds a file beside its place. Every way in which the bytes can be wrong ends in the one exception; the log
    /// tells which.
    /// @throws VoDamagedContentException ("File checksum does not match for: " + place)
    void build(const AdvertisedFileListing& file, const VoFilePath& place, Durability durability, Digest digest,
               const VoStopFlag& stop);

    /// Logs the chunks that are why a file of that release is not what it ought to be.
    /// @throws VoDamagedContentException ("File checksum does not match for: " + place)
    [[noreturn]] void throwDamaged(const AdvertisedFileListing& file, const VoFilePath& place) const;

private:
    std::uint64_t limit();
    bool writePiece(const ChunkReferenceListing& piece, FileInstaller& built);

    const AdvertisedPackageListing& m_advert;
    const StagingDirectory m_staging;
    const EventReport& m_events;
    ChunkCache m_cache;
    std::unique_ptr<ChunkReader> m_reader; // while chunks are read ahead
    std::uint64_t m_limit = 0;             // what a chunk may uncompress to; 0: not known yet
};

} // namespace vo::updater::detail
