#pragma once

#include <Core/VoExport.h>
#include <Threading/VoStopFlag.h>

#include <atomic>
#include <exception>
#include <future>
#include <type_traits>
#include <utility>

/// @cond INTERNAL
namespace vo::background_task::detail {

/// One queued piece of work. Whoever claims it runs it; so a job may be taken out of the queue's order by somebody who
/// waits for it.
class VOCORE_EXPORT Job
{
public:
    Job() = default;
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    virtual ~Job();

    /// True for the first caller only.
    bool claim() noexcept { return !m_claimed.exchange(true, std::memory_order_acq_rel); }

    virtual void run() noexcept = 0;    ///< The work; its failure is kept in the result. Only for who has claimed it.
    virtual void cancel() noexcept = 0; ///< Gives up the work unrun. Only for who has claimed it.
    virtual void stop() noexcept;       ///< Asks for an early end, from any thread. Does nothing unless overridden.

private:
    std::atomic<bool> m_claimed{false};
};

/// VoUserCancelledException, for the result of work that was never run.
VOCORE_EXPORT std::exception_ptr CancelledException();

VOCORE_EXPORT void LogFailedWork(); ///< Logs the exception that is being handled.

/// A function whose end nobody waits for.
template <typename Function>
class DetachedJob final : public Job
{
public:
    explicit DetachedJob(Function function)
        : m_function(std::move(function))
    {
    }

    void run() noexcept override
    {
        try {
            m_function();
        } catch (...) {
            LogFailedWork();
        }
    }

    void cancel() noexcept override {}

private:
    Function m_function;
};

/// A function whose result goes to a future.
template <typename Function>
class FunctionJob final : public Job
{
public:
    using Result = std::invoke_result_t<Function&>;

    explicit FunctionJob(Function function)
        : m_function(std::move(function))
    {
    }

    std::future<Result> future() { return m_promise.get_future(); }

    void run() noexcept override
    {
        try {
            if constexpr (std::is_void_v<Result>) {
                m_function();
                m_promise.set_value();
            } else {
                m_promise.set_value(m_function());
            }
        } catch (...) {
            m_promise.set_exception(std::current_exception());
        }
    }

    void cancel() noexcept override { m_promise.set_exception(CancelledException()); }

private:
    Function m_function;
    std::promise<Result> m_promise;
};

} // namespace vo::background_task::detail
/// @endcond
