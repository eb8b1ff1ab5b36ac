#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoExport.h>
#include <Core/VoUUID.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <unordered_map>

namespace vo::updater::detail {

/// Uncompressed chunks of a running installation. A chunk leaves when its last announced use is over, and the least
/// recently used ones leave when the bytes exceed a limit; never the one that was used last, which a caller may be
/// reading.
class VOCORE_PRIVATE_EXPORT ChunkCache
{
public:
    /// The limit that installers use, in bytes: 32 MiB.
    static constexpr std::size_t UsualLimit = std::size_t{32} << 20;

    explicit ChunkCache(std::size_t limit = UsualLimit);
    ~ChunkCache();

    /// Announces how often a chunk will be used altogether. One that is not announced stays until it is pushed out.
    void expect(const VoUUID& id, std::uint64_t uses);

    /// The chunk, now the most recently used, or null. Valid until the next insertion or the chunk's last use.
    const VoByteArray* find(const VoUUID& id);
    /// Adds a chunk as the most recently used.
    const VoByteArray& insert(const VoUUID& id, VoByteArray&& bytes);
    /// Ends one use.
    void release(const VoUUID& id);

    std::size_t limit() const; ///< What the bytes may come to.
    std::size_t bytes() const; ///< What they come to now.

private:
    struct Entry
    {
        VoUUID id;
        VoByteArray bytes;
    };
    using Entries = std::list<Entry>; // the most recently used one first

    void erase(Entries::iterator entry);

    Entries m_entries;
    std::unordered_map<VoUUID, Entries::iterator> m_positions;
    std::unordered_map<VoUUID, std::uint64_t> m_uses;
    std::size_t m_limit;
    std::size_t m_bytes = 0;
};

} // namespace vo::updater::detail
