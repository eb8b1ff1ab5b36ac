#include <Download/VoDownloadFuture.h>

#include <Core/VoException.h>
#include <Download/VoDownloadManager.h>

#include <chrono>
#include <utility>

VoDownloadFuture::VoDownloadFuture() noexcept = default;

VoDownloadFuture::VoDownloadFuture(std::future<void>&& end) noexcept
    : std::future<void>(std::move(end))
{
}

void VoDownloadFuture::get()
{
    requireOtherThread();
    std::future<void>::get();
}

void VoDownloadFuture::wait() const
{
    requireOtherThread();
    std::future<void>::wait();
}

void VoDownloadFuture::requireOtherThread() const
{
    const bool runs = valid() && wait_for(std::chrono::seconds(0)) != std::future_status::ready;
    if (runs && VoDownloadManager::IsOwner())
        throw VoInvalidCallException("Cannot wait for a download on the thread that carries it out");
}
