#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vo::detail {

/// One connection of a broadcaster, without the type of its callback.
struct VOCORE_EXPORT AbstractConnection
{
    AbstractConnection() = default;
    AbstractConnection(const AbstractConnection&) = delete;
    AbstractConnection& operator=(const AbstractConnection&) = delete;
    virtual ~AbstractConnection();

    const VoUUID id;  ///< Made for this connection.
    bool live = true; ///< False once disconnected; then it is only kept for a running broadcast.
    std::shared_ptr<AbstractConnection> next; ///< Chains connections that are about to be dropped together.
};

/// The connections of a broadcaster in the order of their identifiers, and the rules for touching them.
///
/// Two mutexes guard them. The broadcast mutex is held while callbacks run and by whoever changes the connections from
/// another thread, so that nobody disconnects under a running callback. The map mutex is held for moments only, by
/// everybody who changes the connections and by contains(), which therefore works during a broadcast.
///
/// The thread that broadcasts has the broadcast mutex already. What its callbacks disconnect is only marked, what they
/// connect is put aside; both are settled when the broadcast ends.
class VOCORE_EXPORT BroadcastConnections
{
public:
    BroadcastConnections() = default;
    BroadcastConnections(const BroadcastConnections&) = delete;
    BroadcastConnections& operator=(const BroadcastConnections&) = delete;
    ~BroadcastConnections() = default;

    void add(std::shared_ptr<AbstractConnection> connection); ///< Connects.
    bool contains(const VoUUID& id) const;                    ///< Whether `id` is connected.

    /// Disconnects `id`. Returns what is to be dropped when no lock is held: null when there is no such connection or
    /// when a running broadcast still needs it.
    std::shared_ptr<AbstractConnection> remove(const VoUUID& id);

    /// A running broadcast: locks from its making to its end.
    class VOCORE_EXPORT Broadcast
    {
    public:
        /// @throws VoInvalidCallException "Broadcast called from within a broadcast" on the thread of a running one
        explicit Broadcast(BroadcastConnections& connections);
        Broadcast(const Broadcast&) = delete;
        Broadcast& operator=(const Broadcast&) = delete;
        ~Broadcast();

        /// The number of connections to go through; it stays during the broadcast.
        std::size_t size() const noexcept { return m_size; }

        /// The connection at `index`, which is to be called only if it is live.
        AbstractConnection& operator[](std::size_t index) const noexcept { return *m_owner.m_ordered[index]; }

    private:
        BroadcastConnections& m_owner;
        std::size_t m_size;
    };

private:
    using Connections = std::vector<std::shared_ptr<AbstractConnection>>;

    bool isBroadcasting() const noexcept;
    std::shared_ptr<AbstractConnection> removeWithin(const VoUUID& id);
    void insertOrdered(std::shared_ptr<AbstractConnection> connection);
    std::shared_ptr<AbstractConnection> settle() noexcept;

    std::mutex m_broadcastMutex;
    std::atomic<std::thread::id> m_broadcastThread{
        std::thread::id()}; // the thread that holds m_broadcastMutex in a Broadcast

    // Changed under both mutexes; the broadcasting thread reads them without the second.
    mutable std::mutex m_mapMutex;
    Connections m_ordered;
    Connections m_added;      // connected by callbacks of the running broadcast
    bool m_unsettled = false; // callbacks of the running broadcast have connected or disconnected
};

} // namespace vo::detail
