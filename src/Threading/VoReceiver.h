#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <memory>

struct VoBroadcastConnection;

/// Owns one connection to a broadcaster: while the receiver lives, the callback that was connected is called.
///
/// Destroying a receiver disconnects. When it returns, the callback is not running and will not be called again, unless
/// the receiver is destroyed from inside the very broadcast that runs the callback; for this it waits until a broadcast
/// on another thread has ended. So a receiver must not be destroyed while holding something that the callback waits
/// for, for example on the thread of the user interface while the callback waits for that thread.
///
/// A receiver may outlive its broadcaster; it is inert then. Receivers of one broadcaster may be made and destroyed on
/// any threads; one receiver is used by one thread at a time.
class VOCORE_EXPORT VoReceiver
{
public:
    VoReceiver() noexcept; ///< Receives nothing.

    /// Swaps what the two receivers hold: a connection assigned over lives on in `other` until that is destroyed. @{
    VoReceiver(VoReceiver&& other) noexcept;
    VoReceiver& operator=(VoReceiver&& other) noexcept;
    /// @}

    VoReceiver(const VoReceiver&) = delete;
    VoReceiver& operator=(const VoReceiver&) = delete;
    ~VoReceiver(); ///< Disconnects.

    void swap(VoReceiver& other) noexcept;                                 ///< Swaps what the two receivers hold.
    friend void swap(VoReceiver& a, VoReceiver& b) noexcept { a.swap(b); } ///< As the member.

    /// Whether the broadcaster lives and knows the connection. Another thread may end that at any time.
    bool isReceiving() const;

    /// The identifier of the connection; an empty one for a receiver without.
    const VoUUID& id() const;

private:
    friend class VoAbstractBroadcaster;
    struct Private;

    explicit VoReceiver(VoBroadcastConnection connection);

    std::unique_ptr<Private> m_private;
};
