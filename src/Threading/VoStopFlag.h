#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <functional>
#include <memory>

/// Asks running work to stop. Copies share one flag, which is raised once and stays raised.
///
/// The work asks isStopped() or calls throwIfStopped() at places where it can stop; what waits uses waitFor() or
/// onStop(). All members may be called from all threads, but none from a signal handler.
class VOCORE_EXPORT VoStopFlag
{
public:
    VoStopFlag();                                            ///< A new flag that is not raised.
    VoStopFlag(const VoStopFlag& other) noexcept;            ///< Shares the flag of `other`.
    VoStopFlag& operator=(const VoStopFlag& other) noexcept; ///< Shares the flag of `other`.
    ~VoStopFlag();

    /// Raises the flag and those of its children, wakes what waits and runs the callbacks, on this thread. Their
    /// exceptions are logged and go no further. Raising again does nothing.
    void stop() const;

    bool isStopped() const noexcept; ///< Whether the flag is raised; what happened before stop() is visible then.
    void throwIfStopped() const;     ///< @throws VoUserCancelledException when the flag is raised

    /// Waits until the flag is raised, at most for `duration`. Returns whether it is raised.
    bool waitFor(const VoTimeDuration& duration) const;

    /// Calls `callback` once when the flag is raised, on the thread that raises it and without any lock held; at once,
    /// on this thread, when it is raised already. Destroying the receiver withdraws the callback and waits for it where
    /// it is just running on another thread.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver onStop(std::function<void()> callback) const;

    /// A new flag that is raised together with this one, but can be raised alone.
    VoStopFlag child() const;

private:
    class Private;

    explicit VoStopFlag(std::shared_ptr<Private> state) noexcept;

    std::shared_ptr<Private> m_private;
};

namespace vo::background_task {
using ::VoStopFlag;
}
