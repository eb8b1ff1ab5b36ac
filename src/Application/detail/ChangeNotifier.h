#pragma once

#include <Application/VoValueChange.h>
#include <Core/VoExport.h>
#include <Threading/detail/CallbackList.h>

#include <deque>
#include <functional>
#include <mutex>

namespace vo::detail {

/// Tells changes of values, in the order in which they were made and without any lock held.
///
/// Who changes a value posts the change under the lock of the value, lets go of the lock, and calls deliver(). One
/// thread at a time delivers; what others post meanwhile it delivers too, and what its callbacks change comes after.
class VOCORE_PRIVATE_EXPORT ChangeNotifier final : public CallbackList
{
public:
    /// As the public Connect() functions hand it on.
    using Callback = std::function<void(const VoValueChange&)>;

    ~ChangeNotifier() override;

    /// Calls `callback` with each change of the value `name`, of all values for an empty name.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver connect(const VoString& name, Callback callback);

    /// Queues a change. May throw for want of memory, and has done nothing then.
    void post(VoValueChange change);

    /// Calls the callbacks for what is queued, unless another thread, or this one further up, is at it. What callbacks
    /// throw is logged.
    void deliver() noexcept;

private:
    struct ChangeEntry;

    bool takeNext(VoValueChange& change);
    void tell(const VoValueChange& change);

    std::mutex m_queueMutex;
    std::deque<VoValueChange> m_queue;
    bool m_delivering = false;
};

} // namespace vo::detail
