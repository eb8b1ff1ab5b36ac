#include <Threading/VoParallelTaskScheduler.h>

#include <Core/VoExceptionText.h>
#include <Core/detail/Callback.h>
#include <Subsystem/VoLogging.h>
#include <Threading/detail/Processors.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace vo::background_task {

namespace {

using RangeFunction = std::function<void(std::size_t, std::size_t)>;

/// The pieces of one parallelFor, handed out to whoever asks. Helpers that come too late find nothing left and do not
/// touch the function any more, so the caller need not wait for them.
class Pieces
{
public:
    Pieces(std::size_t begin, std::size_t end, std::size_t grain, const RangeFunction& function)
        : m_end(end)
        , m_grain(grain)
        , m_function(function)
        , m_next(begin)
    {
    }

    void help() noexcept
    {
        std::size_t first = 0;
        std::size_t last = 0;
        while (take(first, last)) {
            std::exception_ptr failure;
            try {
                m_function(first, last);
            } catch (...) {
                failure = std::current_exception();
            }
            giveBack(std::move(failure));
        }
    }

    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_idle.wait(lock, [this] { return m_active == 0 && m_next == m_end; });
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    bool take(std::size_t& first, std::size_t& last)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_next == m_end)
            return false;
        first = m_next;
        last = m_end - m_next > m_grain ? m_next + m_grain : m_end;
        m_next = last;
        ++m_active;
        return true;
    }

    void giveBack(std::exception_ptr failure) noexcept
    {
        if (failure)
            keep(std::move(failure));
        const std::lock_guard<std::mutex> lock(m_mutex);
        --m_active;
        if (m_active == 0 && m_next == m_end)
            m_idle.notify_all();
    }

    void keep(std::exception_ptr failure) noexcept
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_next = m_end;
            if (!m_failure) {
                m_failure = std::move(failure);
                return;
            }
        }
        try {
            std::rethrow_exception(failure);
        } catch (...) {
            vo::logging::Logger::Get("tasks").error("Parallel work failed: " + vo::CurrentExceptionText());
        }
    }

    const std::size_t m_end;
    const std::size_t m_grain;
    const RangeFunction& m_function;

    std::mutex m_mutex; // for all below
    std::condition_variable m_idle;
    std::size_t m_next;
    std::size_t m_active = 0;
    std::exception_ptr m_failure;
};

} // namespace

VoParallelTaskScheduler::VoParallelTaskScheduler()
    : VoParallelTaskScheduler(vo::detail::AvailableProcessors())
{
}

VoParallelTaskScheduler::VoParallelTaskScheduler(std::size_t workers)
    : AbstractTaskScheduler(workers)
{
}

VoParallelTaskScheduler::~VoParallelTaskScheduler() = default;

void VoParallelTaskScheduler::parallelFor(std::size_t begin, std::size_t end, std::size_t grain,
                                          const RangeFunction& function)
{
    vo::detail::RequireCallback(function);
    if (begin >= end)
        return;
    grain = std::max<std::size_t>(1, grain);
    const std::size_t pieces = (end - begin - 1) / grain + 1;
    const auto shared = std::make_shared<Pieces>(begin, end, grain, function);
    const std::size_t helpers = std::min(pieces - 1, isWorker() ? workers() - 1 : workers());
    for (std::size_t i = 0; i < helpers; ++i)
        start([shared] { shared->help(); });
    shared->help();
    shared->wait();
}

} // namespace vo::background_task
