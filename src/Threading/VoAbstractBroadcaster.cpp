#include <Threading/VoAbstractBroadcaster.h>

#include <Threading/VoBroadcastConnection.h>
#include <Threading/VoReceiver.h>
#include <Threading/detail/BroadcasterCell.h>

#include <mutex>
#include <utility>

namespace {

// Where the innermost DiscardScope of this thread keeps what is discarded.
thread_local std::shared_ptr<void>* t_kept = nullptr;

} // namespace

namespace vo::detail {

void BroadcasterCell::withdraw() noexcept
{
    std::unique_lock lock(m_mutex);
    setValue(nullptr);
    m_left.wait(lock, [this] { return m_users == 0; });
}

BroadcasterCell::Use::Use(BroadcasterCell& cell) noexcept
    : m_cell(cell)
{
    const std::lock_guard lock(m_cell.m_mutex);
    m_broadcaster = m_cell.value();
    ++m_cell.m_users;
}

BroadcasterCell::Use::~Use()
{
    const std::lock_guard lock(m_cell.m_mutex);
    if (--m_cell.m_users == 0)
        m_cell.m_left.notify_all();
}

DiscardScope::DiscardScope(std::shared_ptr<void>& kept) noexcept
    : m_outer(std::exchange(t_kept, &kept))
{
}

DiscardScope::~DiscardScope()
{
    t_kept = m_outer;
}

} // namespace vo::detail

struct VoAbstractBroadcaster::Private
{
    VoSharedPtr<vo::detail::BroadcasterCell> cell;
};

VoAbstractBroadcaster::VoAbstractBroadcaster()
    : m_private(std::make_unique<Private>())
{
    m_private->cell = VoSharedPtr<vo::detail::BroadcasterCell>::Make(this);
}

VoAbstractBroadcaster::~VoAbstractBroadcaster()
{
    release();
}

VoReceiver VoAbstractBroadcaster::connection(VoUUID id) const
{
    return VoReceiver(VoBroadcastConnection{std::move(id), m_private->cell});
}

void VoAbstractBroadcaster::release() noexcept
{
    m_private->cell->withdraw();
}

void VoAbstractBroadcaster::discard(std::shared_ptr<void> connection) noexcept
{
    if (t_kept && !*t_kept)
        t_kept->swap(connection);
}
