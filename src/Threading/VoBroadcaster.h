#pragma once

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Threading/BroadcastConnections.h>
#include <Threading/VoAbstractBroadcaster.h>
#include <Threading/VoReceiver.h>

#include <functional>
#include <memory>
#include <utility>

/// Delivers values of one type to any number of callbacks.
///
/// Callbacks run on the thread that broadcasts, one after the other, in the order of the identifiers of their
/// connections, which is not the order of connecting. Connecting, disconnecting and broadcasting from other threads
/// wait until a running broadcast has ended.
///
/// A callback had better leave its own broadcaster alone. What happens if it does not:
/// - a receiver destroyed in a callback disconnects at once: its callback is not called any more in this broadcast;
/// - what a callback connects is first called in the next broadcast;
/// - a broadcast from within a broadcast throws VoInvalidCallException("Broadcast called from within a broadcast").
///
/// An exception of a callback ends the broadcast, the remaining callbacks are skipped, and it passes to the caller.
///
/// The owner sees to it that no broadcast is running when the broadcaster is destroyed. Receivers that are left become
/// inert.
template <typename T>
class VOCORE_TEMPLATE_EXPORT VoBroadcaster : public VoAbstractBroadcaster
{
public:
    VoBroadcaster() = default;
    ~VoBroadcaster() override { release(); }

    /// Calls `callback` with each value broadcast while the receiver lives.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver connect(std::function<void(T)> callback)
    {
        if (!callback)
            throw VoInvalidParameterException("Invalid callback");
        auto entry = std::make_shared<Connection>();
        entry->callback = std::move(callback);
        VoReceiver receiver = connection(entry->id);
        m_connections.add(std::move(entry));
        return receiver;
    }

    /// Calls every callback with `value`.
    void broadcast(T value)
    {
        vo::detail::BroadcastConnections::Broadcast running(m_connections);
        for (std::size_t i = 0; i < running.size(); ++i) {
            auto& entry = static_cast<Connection&>(running[i]);
            if (entry.live)
                entry.callback(value);
        }
    }

    bool isConnected(const VoUUID& id) const override { return m_connections.contains(id); }
    void disconnect(const VoUUID& id) override { discard(m_connections.remove(id)); }

private:
    struct Connection final : vo::detail::AbstractConnection
    {
        std::function<void(T)> callback;
    };

    vo::detail::BroadcastConnections m_connections;
};
