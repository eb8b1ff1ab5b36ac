#include <Threading/VoReceiver.h>

#include <Core/VoException.h>
#include <Threading/VoAbstractBroadcaster.h>
#include <Threading/VoBroadcastConnection.h>
#include <Threading/detail/BroadcasterCell.h>

#include <utility>

namespace {

using Cell = vo::detail::BroadcasterCell;

void Disconnect(const VoBroadcastConnection& connection)
{
    const VoSharedPtr<Cell> cell = connection.broadcaster.lock().staticCast<Cell>();
    if (!cell)
        return;
    std::shared_ptr<void> discarded; // dropped last: it may destroy the broadcaster, which waits for the use to end
    const Cell::Use use(*cell);
    const vo::detail::DiscardScope scope(discarded);
    if (VoAbstractBroadcaster* const broadcaster = use.broadcaster())
        broadcaster->disconnect(connection.id);
}

} // namespace

struct VoReceiver::Private
{
    VoBroadcastConnection connection;
};

VoReceiver::VoReceiver() noexcept = default;

VoReceiver::VoReceiver(VoBroadcastConnection connection)
    : m_private(new Private{std::move(connection)})
{
}

VoReceiver::VoReceiver(VoReceiver&& other) noexcept
{
    swap(other);
}

VoReceiver& VoReceiver::operator=(VoReceiver&& other) noexcept
{
    swap(other);
    return *this;
}

VoReceiver::~VoReceiver()
{
    if (!m_private)
        return;
    try {
        Disconnect(m_private->connection);
    } catch (const VoNullPointerException&) {
        // The broadcaster went meanwhile: nothing to disconnect from.
    }
}

void VoReceiver::swap(VoReceiver& other) noexcept
{
    m_private.swap(other.m_private);
}

bool VoReceiver::isReceiving() const
{
    if (!m_private)
        return false;
    const VoSharedPtr<Cell> cell = m_private->connection.broadcaster.lock().staticCast<Cell>();
    if (!cell)
        return false;
    const Cell::Use use(*cell);
    const VoAbstractBroadcaster* const broadcaster = use.broadcaster();
    try {
        return broadcaster && broadcaster->isConnected(m_private->connection.id);
    } catch (const VoNullPointerException&) {
        return false;
    }
}

const VoUUID& VoReceiver::id() const
{
    static const auto& none = *new VoUUID(""); // outlives all static objects
    return m_private ? m_private->connection.id : none;
}
