#include <Download/detail/ConnectionQueue.h>

#include <algorithm>
#include <utility>

namespace vo::detail {

void ConnectionQueue::acquire(const QString& host, const void* owner, std::function<void()> send)
{
    Host& state = m_hosts[host];
    if (state.running >= PerHost) {
        state.waiting.push_back({owner, std::move(send)});
        return;
    }
    ++state.running;
    send();
}

void ConnectionQueue::release(const QString& host)
{
    Host& state = m_hosts[host];
    if (state.waiting.empty()) {
        if (--state.running == 0)
            m_hosts.remove(host);
        return;
    }
    const Waiting next = std::move(state.waiting.front());
    state.waiting.pop_front();
    next.send();
}

void ConnectionQueue::forget(const void* owner)
{
    for (Host& host : m_hosts) {
        const auto owned = [owner](const Waiting& waiting) { return waiting.owner == owner; };
        host.waiting.erase(std::remove_if(host.waiting.begin(), host.waiting.end(), owned), host.waiting.end());
    }
}

} // namespace vo::detail
