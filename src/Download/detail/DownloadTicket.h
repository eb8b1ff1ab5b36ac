#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Threading/VoReceiver.h>

#include <functional>
#include <future>
#include <mutex>
#include <vector>

class VoDownloadException;

/// Stands for the caller of one request inside the service: it is told how the download ended, once.
///
/// A ticket that is dropped without that, because the service has gone, tells so itself: no caller waits for ever. All
/// members may be called from all threads.
class VOCORE_PRIVATE_EXPORT VoDownloadTicket
{
public:
    VoDownloadTicket() = default;
    VoDownloadTicket(const VoDownloadTicket&) = delete;
    VoDownloadTicket& operator=(const VoDownloadTicket&) = delete;
    ~VoDownloadTicket();

    std::future<void> future();     ///< Ready at the end. To be called once.
    void keep(VoReceiver receiver); ///< Holds the connection of a callback until the end.

    /// Calls `wake` at the end; an empty one takes that back, after which it is not running either.
    void onEnd(std::function<void()> wake);

    void end() noexcept;                                   ///< The download is complete.
    void end(const VoDownloadException& failure) noexcept; ///< The download has failed.
    bool hasEnded() const noexcept;                        ///< Whether end() was called.

private:
    void end(const VoDownloadException* failure) noexcept;

    std::promise<void> m_promise;
    mutable std::mutex m_mutex; // guards the rest
    bool m_ended = false;
    VoReceiver m_receiver;
    std::function<void()> m_wake;
};

using VoDownloadTicketPtr = VoSharedPtr<VoDownloadTicket>;
