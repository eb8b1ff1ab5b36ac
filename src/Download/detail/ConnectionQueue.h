#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>

#include <cstddef>
#include <deque>
#include <functional>

namespace vo::detail {

/// Holds back requests for which a host has no free connection, in order.
///
/// The framework would queue them too, but when a connection breaks it fails everything in its queue together with the
/// request concerned, and it does not tell which requests are on their way. So it gets no more than it can send.
class ConnectionQueue
{
public:
    /// Connections that the framework opens for each host.
    static constexpr int PerHost = 6;

    /// Calls `send` as soon as a connection is free, maybe at once; it holds the connection until release().
    void acquire(const QString& host, const void* owner, std::function<void()> send);
    void release(const QString& host);
    void forget(const void* owner); ///< Drops what waits for an owner.

private:
    struct Waiting
    {
        const void* owner;
        std::function<void()> send;
    };
    struct Host
    {
        int running = 0;
        std::deque<Waiting> waiting;
    };

    QHash<QString, Host> m_hosts;
};

} // namespace vo::detail
