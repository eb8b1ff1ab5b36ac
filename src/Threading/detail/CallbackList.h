#pragma once

#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Threading/VoAbstractBroadcaster.h>
#include <Threading/VoReceiver.h>

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace vo::detail {

/// Callbacks that are called without any lock held, possibly on several threads at once, unlike those of a broadcaster.
///
/// Disconnecting waits until calls on other threads have ended. A call from inside which it is done goes on.
class VOCORE_PRIVATE_EXPORT CallbackList : public VoAbstractBroadcaster
{
public:
    ~CallbackList() override;

    bool isConnected(const VoUUID& id) const override;
    void disconnect(const VoUUID& id) override;

protected:
    /// One callback; concrete lists add what is called.
    struct VOCORE_PRIVATE_EXPORT Entry
    {
        Entry() = default;
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;
        virtual ~Entry();

        const VoUUID id;

        // Under the list's mutex.
        bool removed = false;
        std::size_t running = 0; // calls on all threads
    };

    using Entries = std::vector<std::shared_ptr<Entry>>;

    CallbackList();

    [[nodiscard]] VoReceiver add(std::shared_ptr<Entry> entry);

    /// Calls `call` with each entry of now, in the order of adding, unless it is disconnected before its turn.
    template <typename Function>
    void callEach(const Function& call)
    {
        for (const std::shared_ptr<Entry>& entry : snapshot())
            callOne(*entry, call);
    }

    /// The same, those that were added last first.
    template <typename Function>
    void callEachBackwards(const Function& call)
    {
        const Entries entries = snapshot();
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
            callOne(**entry, call);
    }

    /// Calls `look` with each entry under the list's mutex.
    template <typename Function>
    void inspectEach(const Function& look) const
    {
        const std::lock_guard lock(m_mutex);
        for (const std::shared_ptr<Entry>& entry : m_entries)
            look(*entry);
    }

private:
    // A call of one entry; those of one thread form a stack.
    class VOCORE_PRIVATE_EXPORT Running
    {
    public:
        Running(CallbackList& list, Entry& entry);
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        ~Running();

        bool permitted() const noexcept { return m_permitted; }
        static std::size_t OnThisThread(const Entry& entry) noexcept;

    private:
        CallbackList& m_list;
        Entry& m_entry;
        const Running* m_outer;
        bool m_permitted;
    };

    template <typename Function>
    void callOne(Entry& entry, const Function& call)
    {
        const Running running(*this, entry);
        if (running.permitted())
            call(entry);
    }

    Entries snapshot() const;

    mutable std::mutex m_mutex;
    std::condition_variable m_ended; // a call of a removed entry has
    Entries m_entries;
};

} // namespace vo::detail
