#include <Threading/detail/CallbackList.h>

#include <algorithm>
#include <utility>

namespace vo::detail {

namespace {

template <typename Entries>
auto Find(Entries& entries, const VoUUID& id)
{
    return std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry->id == id; });
}

} // namespace

// The innermost call of this thread. A function, because a thread-local variable cannot cross the library's boundary on
// every platform.
static const void*& InnermostCall() noexcept
{
    thread_local const void* innermost = nullptr;
    return innermost;
}

CallbackList::Entry::~Entry() = default;

CallbackList::CallbackList() = default;

CallbackList::~CallbackList()
{
    release();
}

bool CallbackList::isConnected(const VoUUID& id) const
{
    const std::lock_guard lock(m_mutex);
    return Find(m_entries, id) != m_entries.end();
}

void CallbackList::disconnect(const VoUUID& id)
{
    std::shared_ptr<Entry> entry;
    {
        std::unique_lock lock(m_mutex);
        const auto found = Find(m_entries, id);
        if (found == m_entries.end())
            return;
        entry = std::move(*found);
        m_entries.erase(found);
        // From here on no call of it begins. Those that run are waited for, except for the ones that this thread is in
        // the midst of: they would wait for themselves.
        entry->removed = true;
        const std::size_t own = Running::OnThisThread(*entry);
        m_ended.wait(lock, [&] { return entry->running <= own; });
    }
    // Without the lock: what a callback holds may use the list when it is destroyed.
    discard(std::move(entry));
}

VoReceiver CallbackList::add(std::shared_ptr<Entry> entry)
{
    VoReceiver receiver = connection(entry->id);
    const std::lock_guard lock(m_mutex);
    m_entries.push_back(std::move(entry));
    return receiver;
}

CallbackList::Entries CallbackList::snapshot() const
{
    const std::lock_guard lock(m_mutex);
    return m_entries;
}

CallbackList::Running::Running(CallbackList& list, Entry& entry)
    : m_list(list)
    , m_entry(entry)
    , m_outer(static_cast<const Running*>(std::exchange(InnermostCall(), this)))
{
    // Looked at and counted under one lock: a disconnection either prevents this call or waits for it.
    const std::lock_guard lock(m_list.m_mutex);
    m_permitted = !m_entry.removed;
    if (m_permitted)
        ++m_entry.running;
}

CallbackList::Running::~Running()
{
    InnermostCall() = m_outer;
    if (!m_permitted)
        return;
    const std::lock_guard lock(m_list.m_mutex);
    --m_entry.running;
    if (m_entry.removed)
        m_list.m_ended.notify_all();
}

std::size_t CallbackList::Running::OnThisThread(const Entry& entry) noexcept
{
    std::size_t count = 0;
    for (auto call = static_cast<const Running*>(InnermostCall()); call; call = call->m_outer) {
        if (&call->m_entry == &entry && call->m_permitted)
            ++count;
    }
    return count;
}

} // namespace vo::detail
