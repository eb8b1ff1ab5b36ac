#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUUID.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>

namespace vo::updater::detail {

/// Listings in their order, found by ID in constant time. Of several with one ID the first is found.
template <typename T>
class ListingTable
{
public:
    const VoDeque<T>& items() const { return m_items; }

    void add(T item)
    {
        m_positions.emplace(item.id().toString().toStdString(), m_items.size());
        m_items.pushBack(std::move(item));
    }

    const T* find(const VoUUID& id) const
    {
        const auto position = m_positions.find(id.toString().toStdString());
        return position == m_positions.end() ? nullptr : &m_items[position->second];
    }

private:
    VoDeque<T> m_items;
    std::unordered_map<std::string, std::size_t> m_positions; // by the exact text of the ID; its hashes are kept
};

} // namespace vo::updater::detail
