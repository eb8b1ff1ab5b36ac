#include <Application/detail/ChangeNotifier.h>

#include <Core/VoExceptionText.h>
#include <Core/detail/Callback.h>
#include <Subsystem/VoLogging.h>

#include <utility>

namespace vo::detail {

struct ChangeNotifier::ChangeEntry final : Entry
{
    VoString name;
    Callback callback;
};

ChangeNotifier::~ChangeNotifier()
{
    release();
}

VoReceiver ChangeNotifier::connect(const VoString& name, Callback callback)
{
    RequireCallback(callback);
    auto entry = std::make_shared<ChangeEntry>();
    entry->name = name;
    entry->callback = std::move(callback);
    return add(std::move(entry));
}

void ChangeNotifier::post(VoValueChange change)
{
    const std::lock_guard lock(m_queueMutex);
    m_queue.push_back(std::move(change));
}

void ChangeNotifier::deliver() noexcept
{
    {
        const std::lock_guard lock(m_queueMutex);
        if (std::exchange(m_delivering, true))
            return;
    }
    for (VoValueChange change; takeNext(change);)
        tell(change);
}

bool ChangeNotifier::takeNext(VoValueChange& change)
{
    const std::lock_guard lock(m_queueMutex);
    m_delivering = !m_queue.empty();
    if (!m_delivering)
        return false;
    change = std::move(m_queue.front());
    m_queue.pop_front();
    return true;
}

void ChangeNotifier::tell(const VoValueChange& change)
try {
    callEach([&](Entry& entry) {
        const auto& wanted = static_cast<ChangeEntry&>(entry);
        if (!wanted.name.isEmpty() && wanted.name != change.name)
            return;
        try {
            wanted.callback(change);
        } catch (...) {
            vo::logging::Logger::Get("application")
                .error("Exception in callback for " + change.name + ": " + vo::CurrentExceptionText());
        }
    });
} catch (...) {
    // Out of memory for the list of callbacks; the one who changed the value must not suffer.
}

} // namespace vo::detail
