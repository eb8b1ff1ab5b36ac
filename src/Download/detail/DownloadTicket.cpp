#include <Download/detail/DownloadTicket.h>

#include <Core/VoString.h>
#include <Download/VoDownloadException.h>

#include <utility>

VoDownloadTicket::~VoDownloadTicket()
{
    if (!hasEnded())
        end(VoDownloadException("Download service is not available"));
}

std::future<void> VoDownloadTicket::future()
{
    return m_promise.get_future();
}

void VoDownloadTicket::keep(VoReceiver receiver)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_receiver.swap(receiver);
}

void VoDownloadTicket::onEnd(std::function<void()> wake)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wake = std::move(wake);
}

void VoDownloadTicket::end() noexcept
{
    end(nullptr);
}

void VoDownloadTicket::end(const VoDownloadException& failure) noexcept
{
    end(&failure);
}

bool VoDownloadTicket::hasEnded() const noexcept
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_ended;
}

void VoDownloadTicket::end(const VoDownloadException* failure) noexcept
{
    VoReceiver receiver;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (std::exchange(m_ended, true))
            return;
        receiver.swap(m_receiver);
    }
    // The callback is gone before the caller goes on: it may refer to what the caller is about to destroy.
    VoReceiver().swap(receiver);
    if (failure)
        m_promise.set_exception(std::make_exception_ptr(*failure));
    else
        m_promise.set_value();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_wake)
        m_wake();
}
