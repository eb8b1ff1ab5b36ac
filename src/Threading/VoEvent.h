#pragma once

#include <Core/VoExport.h>

#include <cstdint>

class VoEventLoop;

/// A unit of work of a VoEventLoop. Derived events override run() with their work.
class VOCORE_EXPORT VoEvent
{
public:
    /// Type of the event that tells a loop to stop.
    static constexpr std::int32_t ABORT = -1;

    explicit VoEvent(std::int32_t type) noexcept; ///< An event of a type that its makers agree on.
    VoEvent(const VoEvent&) = default;            ///< Another event of the same type.
    VoEvent& operator=(const VoEvent&) = default; ///< Takes the type.
    virtual ~VoEvent();

    std::int32_t type() const noexcept { return m_type; } ///< As given.

    /// Whether the event may be combined with others of its type while they wait in a queue; false unless overridden.
    /// Must not change during the event's life.
    virtual bool mergeable() const;

    /// Takes over the work of `other`, a newer mergeable event of the same type, which is then not queued. Runs on the
    /// adding thread under the queue's lock: it must be quick and must not call the loop. Does nothing unless
    /// overridden.
    virtual void merge(const VoEvent& other);

private:
    friend class VoEventLoop;
    virtual void run(); // the work; does nothing unless overridden

    std::int32_t m_type;
};
