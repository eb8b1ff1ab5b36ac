#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <exception>
#include <future>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

/// @cond INTERNAL
namespace vo::background_task::detail {

/// VoUserCancelledException, for the result of work that was never run.
VOCORE_EXPORT std::exception_ptr CancelledException();

VOCORE_EXPORT void LogFailedWork(); ///< Logs the exception that is being handled.

/// A function whose end nobody waits for.
template <typename Function>
struct DetachedWork
{
    void run() noexcept
    {
        try {
            function();
        } catch (...) {
            LogFailedWork();
        }
    }

    void cancel() noexcept {}

    Function function;
};

/// A function whose result goes to a future.
template <typename Function>
struct PromisedWork
{
    using Result = std::invoke_result_t<Function&>;

    void run() noexcept
    {
        try {
            if constexpr (std::is_void_v<Result>) {
                function();
                promise.set_value();
            } else {
                promise.set_value(function());
            }
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }

    void cancel() noexcept { promise.set_exception(CancelledException()); }

    Function function;
    std::promise<Result> promise{};
};

/// One queued piece of work: an object with run() for the work and cancel() to give it up unrun, one of which is called
/// once. A small one lies in the queue itself, so that small tasks cost no allocation.
class QueuedWork
{
public:
    QueuedWork() noexcept = default; ///< Nothing; neither to be run nor to be cancelled.

    /// Takes over `work`.
    template <typename Work, std::enable_if_t<!std::is_reference_v<Work> && !std::is_same_v<Work, QueuedWork>, int> = 0>
    explicit QueuedWork(Work&& work)
    {
        if constexpr (LiesInside<Work>)
            hold(std::forward<Work>(work));
        else
            hold(Boxed<Work>{std::make_unique<Work>(std::forward<Work>(work))});
    }

    QueuedWork(QueuedWork&& other) noexcept { take(other); }
    QueuedWork& operator=(QueuedWork&& other) noexcept
    {
        if (this != &other) {
            reset();
            take(other);
        }
        return *this;
    }
    ~QueuedWork() { reset(); }

    void run() noexcept { m_kind->run(m_storage); }
    void cancel() noexcept { m_kind->cancel(m_storage); }

    /// Lets go of the work.
    void reset() noexcept
    {
        if (const Kind* const kind = std::exchange(m_kind, nullptr))
            kind->destroy(m_storage);
    }

    /// The work if it is of this type, which is a small one; else null.
    template <typename Work>
    Work* as() noexcept
    {
        static_assert(LiesInside<Work>);
        return m_kind == &KindOf<Work> ? &Held<Work>(m_storage) : nullptr;
    }

private:
    // What a type of work knows to do, instead of virtual members: these could not be moved.
    struct Kind
    {
        void (*run)(void*) noexcept;
        void (*cancel)(void*) noexcept;
        void (*move)(void* from, void* to) noexcept; // and destroys it where it was
        void (*destroy)(void*) noexcept;
    };

    template <typename Work>
    struct Boxed
    {
        void run() noexcept { work->run(); }
        void cancel() noexcept { work->cancel(); }

        std::unique_ptr<Work> work;
    };

    static constexpr std::size_t Room = 7 * sizeof(void*); // with the kind, one line of the processor's cache

    template <typename Work>
    static constexpr bool LiesInside = std::conjunction_v<std::bool_constant<(sizeof(Work) <= Room)>,
                                                          std::bool_constant<(alignof(Work) <= alignof(void*))>,
                                                          std::is_nothrow_move_constructible<Work>>;

    template <typename Work>
    static Work& Held(void* storage) noexcept
    {
        return *std::launder(static_cast<Work*>(storage));
    }

    template <typename Work>
    static constexpr Kind KindOf{
        [](void* storage) noexcept { Held<Work>(storage).run(); },
        [](void* storage) noexcept { Held<Work>(storage).cancel(); },
        [](void* from, void* to) noexcept {
            ::new (to) Work(std::move(Held<Work>(from)));
            Held<Work>(from).~Work();
        },
        [](void* storage) noexcept { Held<Work>(storage).~Work(); },
    };

    template <typename Work>
    void hold(Work&& work) noexcept
    {
        ::new (static_cast<void*>(m_storage)) Work(std::forward<Work>(work));
        m_kind = &KindOf<Work>;
    }

    void take(QueuedWork& other) noexcept
    {
        m_kind = std::exchange(other.m_kind, nullptr);
        if (m_kind)
            m_kind->move(other.m_storage, m_storage);
    }

    alignas(void*) unsigned char m_storage[Room];
    const Kind* m_kind = nullptr;
};

} // namespace vo::background_task::detail
/// @endcond
