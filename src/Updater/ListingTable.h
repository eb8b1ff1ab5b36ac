#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUUID.h>

#include <cstddef>
#include <unordered_map>

namespace vo::updater::detail {

/// Listings in their order, found by ID in constant time. Of several with one ID the first is found.
template <typename T>
class ListingTable
{
public:
    const VoDeque<T>& items() const { return m_items; }

    void add(T item)
    {
        m_positions.emplace(item.id(), m_items.size());
        m_items.pushBack(std::move(item));
    }

    const T* find(const VoUUID& id) const
    {
        const auto position = m_positions.find(id);
        return position == m_positions.end() ? nullptr : &m_items[position->second];
    }

    VoDeque<VoUUID> ids() const
    {
        VoDeque<VoUUID> result;
        for (const T& item : m_items)
            result.pushBack(item.id());
        return result;
    }

private:
    VoDeque<T> m_items;
    std::unordered_map<VoUUID, std::size_t> m_positions;
};

} // namespace vo::updater::detail
