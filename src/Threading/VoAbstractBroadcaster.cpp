#include <Threading/VoAbstractBroadcaster.h>

#include <Threading/BroadcasterCell.h>
#include <Threading/VoBroadcastConnection.h>
#include <Threading/VoReceiver.h>

#include <mutex>
#include <utility>

namespace {

// Where the innermost DiscardScope of this thread keeps what is discarded.
thread_local std::shared_ptr<void>* t_kept = nullptr;

} // namespace

namespace vo::detail {

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
    const std::lock_guard lock(m_private->cell->mutex);
    m_private->cell->setValue(nullptr);
}

void VoAbstractBroadcaster::discard(std::shared_ptr<void> connection) noexcept
{
    if (t_kept && !*t_kept)
        t_kept->swap(connection);
}
