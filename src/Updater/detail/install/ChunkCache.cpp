#include <Updater/detail/install/ChunkCache.h>

#include <iterator>
#include <utility>

namespace vo::updater::detail {

ChunkCache::ChunkCache(std::size_t limit)
    : m_limit(limit)
{
}

ChunkCache::~ChunkCache() = default;

void ChunkCache::expect(const VoUUID& id, std::uint64_t uses)
{
    m_uses[id] = uses;
}

const VoByteArray* ChunkCache::find(const VoUUID& id)
{
    const auto position = m_positions.find(id);
    if (position == m_positions.end())
        return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, position->second);
    return &m_entries.front().bytes;
}

const VoByteArray& ChunkCache::insert(const VoUUID& id, VoByteArray&& bytes)
{
    if (const auto known = m_positions.find(id); known != m_positions.end())
        erase(known->second);
    m_entries.push_front(Entry{id, std::move(bytes)});
    m_positions[id] = m_entries.begin();
    m_bytes += m_entries.front().bytes.size();
    while (m_bytes > m_limit && m_entries.size() > 1)
        erase(std::prev(m_entries.end()));
    return m_entries.front().bytes;
}

void ChunkCache::release(const VoUUID& id)
{
    const auto uses = m_uses.find(id);
    if (uses == m_uses.end())
        return;
    if (uses->second > 1) {
        --uses->second;
        return;
    }
    m_uses.erase(uses);
    if (const auto position = m_positions.find(id); position != m_positions.end())
        erase(position->second);
}

std::size_t ChunkCache::limit() const
{
    return m_limit;
}

std::size_t ChunkCache::bytes() const
{
    return m_bytes;
}

void ChunkCache::erase(Entries::iterator entry)
{
    m_bytes -= entry->bytes.size();
    m_positions.erase(entry->id);
    m_entries.erase(entry);
}

} // namespace vo::updater::detail
