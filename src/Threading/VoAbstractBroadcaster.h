#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <memory>

/// The part of a broadcaster that does not depend on the type it delivers: what a VoReceiver needs to know.
///
/// Receivers reach their broadcaster through a shared cell that outlives it and tells them whether it is still there.
class VOCORE_EXPORT VoAbstractBroadcaster
{
public:
    VoAbstractBroadcaster(const VoAbstractBroadcaster&) = delete;
    VoAbstractBroadcaster& operator=(const VoAbstractBroadcaster&) = delete;
    virtual ~VoAbstractBroadcaster();

    virtual bool isConnected(const VoUUID& id) const = 0; ///< Whether the connection `id` exists.
    virtual void disconnect(const VoUUID& id) = 0;        ///< Ends the connection `id` if it exists.

protected:
    VoAbstractBroadcaster();

    /// A receiver that owns the connection `id` of this broadcaster.
    [[nodiscard]] VoReceiver connection(VoUUID id) const;

    /// Cuts the broadcaster off from its receivers, waiting for those that are just disconnecting on other threads.
    /// Called first in the destructor of each concrete broadcaster, while its overrides can still be called.
    void release() noexcept;

    /// Drops a connection that disconnect() has removed: at once, or, when a receiver on this thread is the caller,
    /// after that one has let go of the broadcaster. What the callback has captured may then destroy further receivers
    /// and even the broadcaster.
    static void discard(std::shared_ptr<void> connection) noexcept;

private:
    friend class VoReceiver;
    struct Private;

    std::unique_ptr<Private> m_private;
};
