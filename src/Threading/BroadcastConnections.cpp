#include <Threading/BroadcastConnections.h>

#include <Core/VoException.h>

#include <algorithm>
#include <utility>

namespace vo::detail {

namespace {

// A range of connections ordered by identifier: the place of the identifier.
template <typename Connections>
auto PlaceOf(Connections& connections, const VoUUID& id)
{
    return std::lower_bound(connections.begin(), connections.end(), id,
                            [](const auto& connection, const VoUUID& wanted) { return connection->id < wanted; });
}

template <typename Connections>
auto Find(Connections& connections, const VoUUID& id)
{
    const auto place = PlaceOf(connections, id);
    return place != connections.end() && (*place)->id == id ? place : connections.end();
}

// Drops a chain without recursing along it.
void Drop(std::shared_ptr<AbstractConnection> first)
{
    while (first)
        first = std::exchange(first->next, nullptr);
}

} // namespace

AbstractConnection::~AbstractConnection() = default;

void BroadcastConnections::add(std::shared_ptr<AbstractConnection> connection)
{
    if (!isBroadcasting()) {
        const std::lock_guard alone(m_broadcastMutex);
        const std::lock_guard map(m_mapMutex);
        insertOrdered(std::move(connection));
        return;
    }
    const std::lock_guard map(m_mapMutex);
    const std::size_t needed = m_ordered.size() + m_added.size() + 1;
    if (needed > m_ordered.capacity())
        m_ordered.reserve(2 * needed); // so that settling cannot fail
    m_added.insert(PlaceOf(m_added, connection->id), std::move(connection));
    m_unsettled = true;
}

bool BroadcastConnections::contains(const VoUUID& id) const
{
    const std::lock_guard map(m_mapMutex);
    const auto found = Find(m_ordered, id);
    if (found != m_ordered.end())
        return (*found)->live;
    return Find(m_added, id) != m_added.end();
}

std::shared_ptr<AbstractConnection> BroadcastConnections::remove(const VoUUID& id)
{
    if (isBroadcasting())
        return removeWithin(id);
    const std::lock_guard alone(m_broadcastMutex);
    const std::lock_guard map(m_mapMutex);
    const auto found = Find(m_ordered, id);
    if (found == m_ordered.end())
        return nullptr;
    std::shared_ptr<AbstractConnection> removed = std::move(*found);
    m_ordered.erase(found);
    return removed;
}

std::shared_ptr<AbstractConnection> BroadcastConnections::removeWithin(const VoUUID& id)
{
    const std::lock_guard map(m_mapMutex);
    if (const auto found = Find(m_ordered, id); found != m_ordered.end()) {
        (*found)->live = false; // its callback may be the one that is running
        m_unsettled = true;
        return nullptr;
    }
    const auto found = Find(m_added, id);
    if (found == m_added.end())
        return nullptr;
    std::shared_ptr<AbstractConnection> removed = std::move(*found);
    m_added.erase(found);
    return removed;
}

bool BroadcastConnections::isBroadcasting() const noexcept
{
    // Only this thread's own write can make them equal, so no ordering is needed.
    return m_broadcastThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void BroadcastConnections::insertOrdered(std::shared_ptr<AbstractConnection> connection)
{
    const auto place = PlaceOf(m_ordered, connection->id);
    m_ordered.insert(place, std::move(connection));
}

// Takes out what callbacks have disconnected, puts in what they have connected. Returns the former as a chain.
std::shared_ptr<AbstractConnection> BroadcastConnections::settle() noexcept
{
    std::shared_ptr<AbstractConnection> dropped;
    if (!m_unsettled)
        return dropped;
    const std::lock_guard map(m_mapMutex);
    for (auto& connection : m_ordered) {
        if (connection->live)
            continue;
        connection->next = std::move(dropped);
        dropped = std::move(connection);
    }
    m_ordered.erase(std::remove(m_ordered.begin(), m_ordered.end(), nullptr), m_ordered.end());
    for (auto& connection : m_added)
        insertOrdered(std::move(connection));
    m_added.clear();
    m_unsettled = false;
    return dropped;
}

BroadcastConnections::Broadcast::Broadcast(BroadcastConnections& connections)
    : m_owner(connections)
{
    if (m_owner.isBroadcasting())
        throw VoInvalidCallException("Broadcast called from within a broadcast");
    m_owner.m_broadcastMutex.lock();
    m_owner.m_broadcastThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
    m_size = m_owner.m_ordered.size();
}

BroadcastConnections::Broadcast::~Broadcast()
{
    std::shared_ptr<AbstractConnection> dropped = m_owner.settle();
    m_owner.m_broadcastThread.store(std::thread::id(), std::memory_order_relaxed);
    m_owner.m_broadcastMutex.unlock();
    Drop(std::move(dropped));
}

} // namespace vo::detail
