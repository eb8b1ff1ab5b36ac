#pragma once

#include <Core/VoExport.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoWeakPtr.h>
#include <Threading/VoEvent.h>

#include <memory>

/// Runs queued events one at a time, in order, on a thread of its own.
///
/// A loop is stopped at first and after finish() or terminate(), and running after run(). All members may be called
/// from any thread, also from the loop's own events: there finish() and terminate() only ask the loop to end after the
/// current event and return at once.
///
/// A class that overrides process() must call finish() or terminate() in its own destructor; that of the base would let
/// events run in a half-destroyed object.
class VOCORE_EXPORT VoEventLoop
{
public:
    VoEventLoop(); ///< Stopped, with an empty queue.
    /// As terminate(). One of its own events may destroy the loop: the thread then ends by itself after that event.
    virtual ~VoEventLoop();
    VoEventLoop(const VoEventLoop&) = delete;
    VoEventLoop& operator=(const VoEventLoop&) = delete;

    /// Starts the loop's thread, which begins with what is queued already.
    /// @throws VoInvalidCallException with "Thread already running" or, after ShutDown(), "Event loops have been shut
    /// down"
    /// @throws VoThreadException when the system gives no thread
    void run();

    /// Queues an event, also while the loop is stopped. The result refers to the event without keeping it alive.
    ///
    /// The newest queued event of the same type absorbs a mergeable event if it is mergeable itself; the result then
    /// refers to the absorber. What VoEvent::merge throws passes to the caller, and the event is not queued.
    /// @throws VoNullPointerException with "Null event"
    VoWeakPtr<VoEvent> add(VoSharedPtr<VoEvent> event);

    void finish(); ///< Lets the events queued before this call run, then stops the loop. Does nothing when stopped.
    void
    terminate(); ///< Discards the queued events and stops the loop after the current one. Does nothing when stopped.

    /// Terminates all loops of the process; none can be started from then on. Not to be called from an event.
    static void ShutDown();

protected:
    /// Runs one event, on the loop's thread. What it throws is logged in the category "eventloop" as "Event failed (" +
    /// text + ")", and the loop goes on with the next event.
    virtual void process(VoSharedPtr<VoEvent> event);

private:
    class Private;
    std::shared_ptr<Private> m_private;
};
