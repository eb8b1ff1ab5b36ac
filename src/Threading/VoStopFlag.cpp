#include <Threading/VoStopFlag.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Subsystem/VoLogging.h>
#include <Threading/detail/CallbackList.h>
#include <Time/VoTimeDuration.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

namespace {

void RunGuarded(const std::function<void()>& callback)
{
    try {
        callback();
    } catch (...) {
        vo::logging::Logger::Get("threads").error("Exception in stop callback: " + vo::CurrentExceptionText());
    }
}

} // namespace

class VoStopFlag::Private final : public vo::detail::CallbackList
{
public:
    explicit Private(std::shared_ptr<Private> parent)
        : m_parent(std::move(parent))
    {
    }

    ~Private() override { release(); }

    bool isRaised() const noexcept { return m_raised.load(std::memory_order_acquire); }

    void raise();
    bool waitFor(std::chrono::nanoseconds duration);
    VoReceiver onRaise(std::function<void()> callback);
    void adopt(const std::shared_ptr<Private>& child);

private:
    struct StopEntry final : Entry
    {
        std::function<void()> callback;
    };

    void forgetDeadChildren();

    const std::shared_ptr<Private> m_parent; // so that it can pass on what its own parent raises
    std::atomic<bool> m_raised{false};       // set under the mutex

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::weak_ptr<Private>> m_children;
    std::size_t m_forgetAt = 16;
};

void VoStopFlag::Private::raise()
{
    std::vector<std::weak_ptr<Private>> children;
    {
        const std::lock_guard lock(m_mutex);
        if (m_raised.exchange(true, std::memory_order_acq_rel))
            return;
        children.swap(m_children);
    }
    m_changed.notify_all();
    for (const std::weak_ptr<Private>& child : children) {
        if (const std::shared_ptr<Private> alive = child.lock())
            alive->raise();
    }
    callEach([](Entry& entry) { RunGuarded(static_cast<StopEntry&>(entry).callback); });
}

bool VoStopFlag::Private::waitFor(std::chrono::nanoseconds duration)
{
    // Cut into slices, because the sum of now and a long duration is beyond the clock.
    constexpr std::chrono::nanoseconds slice = std::chrono::hours(1);
    std::unique_lock lock(m_mutex);
    const auto raised = [this] { return isRaised(); };
    for (; duration > slice; duration -= slice) {
        if (m_changed.wait_for(lock, slice, raised))
            return true;
    }
    return m_changed.wait_for(lock, duration, raised);
}

VoReceiver VoStopFlag::Private::onRaise(std::function<void()> callback)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!isRaised()) {
            auto entry = std::make_shared<StopEntry>();
            entry->callback = std::move(callback);
            return add(std::move(entry));
        }
    }
    RunGuarded(callback);
    return {};
}

void VoStopFlag::Private::adopt(const std::shared_ptr<Private>& child)
{
    const std::lock_guard lock(m_mutex);
    if (isRaised()) {
        child->m_raised.store(true, std::memory_order_release); // nobody else knows the child yet
        return;
    }
    if (m_children.size() >= m_forgetAt)
        forgetDeadChildren();
    m_children.push_back(child);
}

void VoStopFlag::Private::forgetDeadChildren()
{
    const auto dead = [](const std::weak_ptr<Private>& child) { return child.expired(); };
    m_children.erase(std::remove_if(m_children.begin(), m_children.end(), dead), m_children.end());
    m_forgetAt = std::max<std::size_t>(16, 2 * m_children.size());
}

VoStopFlag::VoStopFlag()
    : VoStopFlag(std::make_shared<Private>(nullptr))
{
}

VoStopFlag::VoStopFlag(std::shared_ptr<Private> state) noexcept
    : m_private(std::move(state))
{
}

VoStopFlag::VoStopFlag(const VoStopFlag& other) noexcept = default;

VoStopFlag& VoStopFlag::operator=(const VoStopFlag& other) noexcept = default;

VoStopFlag::~VoStopFlag() = default;

void VoStopFlag::stop() const
{
    const std::shared_ptr<Private> kept = m_private; // a callback may destroy this handle
    kept->raise();
}

bool VoStopFlag::isStopped() const noexcept
{
    return m_private->isRaised();
}

void VoStopFlag::throwIfStopped() const
{
    if (isStopped())
        throw VoUserCancelledException();
}

bool VoStopFlag::waitFor(const VoTimeDuration& duration) const
{
    return m_private->waitFor(duration.toChrono());
}

VoReceiver VoStopFlag::onStop(std::function<void()> callback) const
{
    if (!callback)
        throw VoInvalidParameterException("Invalid callback");
    return m_private->onRaise(std::move(callback));
}

VoStopFlag VoStopFlag::child() const
{
    auto state = std::make_shared<Private>(m_private);
    m_private->adopt(state);
    return VoStopFlag(std::move(state));
}
