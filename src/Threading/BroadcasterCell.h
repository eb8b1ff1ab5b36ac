#pragma once

#include <Threading/VoTemplatedObject.h>

#include <shared_mutex>

class VoAbstractBroadcaster;

namespace vo::detail {

/// What a broadcaster shares with its receivers: its address, null once it is being destroyed.
///
/// A receiver holds the mutex shared while it calls the broadcaster; the broadcaster takes it exclusively to withdraw
/// its address. Every cell of a broadcaster is one of these.
class BroadcasterCell final : public VoTemplatedObject<VoAbstractBroadcaster*>
{
public:
    using VoTemplatedObject::VoTemplatedObject;

    std::shared_mutex mutex; ///< Guards the address, and the broadcaster behind it against its destruction.
};

/// Catches what the broadcaster discards while it exists, on this thread: see VoAbstractBroadcaster::discard().
class DiscardScope
{
public:
    explicit DiscardScope(std::shared_ptr<void>& kept) noexcept;
    DiscardScope(const DiscardScope&) = delete;
    DiscardScope& operator=(const DiscardScope&) = delete;
    ~DiscardScope();

private:
    std::shared_ptr<void>* m_outer;
};

} // namespace vo::detail
