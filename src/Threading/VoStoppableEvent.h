#pragma once

#include <Threading/VoEvent.h>

#include <atomic>

/// An event that can be stopped before or while it runs.
///
/// stop() may be called from any thread. Before the event runs it prevents execute() from being called at all; while it
/// runs, only onStop() is told, and the event ends its work itself.
class VOCORE_EXPORT VoStoppableEvent : public VoEvent
{
public:
    explicit VoStoppableEvent(std::int32_t type) noexcept; ///< Neither stopped nor running.
    VoStoppableEvent(const VoStoppableEvent&) = delete;
    VoStoppableEvent& operator=(const VoStoppableEvent&) = delete;
    ~VoStoppableEvent() override;

    void stop();                     ///< Marks the event as stopped, then calls onStop() on this thread.
    bool isRunning() const noexcept; ///< Whether execute() is being called.

protected:
    bool isStopped() const noexcept; ///< Whether stop() has been called; for execute() to ask.

private:
    void run() override;
    virtual void execute() = 0; // the work, on the loop's thread
    virtual void onStop() = 0;  // told on the stopper's thread, possibly while execute() runs

    std::atomic<bool> m_stopped{false};
    std::atomic<bool> m_running{false};
};
