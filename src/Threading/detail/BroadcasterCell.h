#pragma once

#include <Threading/VoTemplatedObject.h>

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>

class VoAbstractBroadcaster;

namespace vo::detail {

/// What a broadcaster shares with its receivers: its address, null once it is being destroyed, and the number of
/// receivers that are just calling it. Every cell of a broadcaster is one of these.
///
/// Receivers count themselves instead of holding a lock while they call: the call takes the broadcaster's own locks,
/// and callbacks that run under those make calls too.
class BroadcasterCell final : public VoTemplatedObject<VoAbstractBroadcaster*>
{
public:
    using VoTemplatedObject::VoTemplatedObject;

    /// Withdraws the address and waits for the calls that are under way.
    void withdraw() noexcept;

    /// A call of the broadcaster, which is not destroyed while this exists.
    class Use
    {
    public:
        explicit Use(BroadcasterCell& cell) noexcept;
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use();

        VoAbstractBroadcaster* broadcaster() const noexcept { return m_broadcaster; } ///< Null when it is gone.

    private:
        BroadcasterCell& m_cell;
        VoAbstractBroadcaster* m_broadcaster;
    };

private:
    std::mutex m_mutex;
    std::condition_variable m_left;
    std::size_t m_users = 0;
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
