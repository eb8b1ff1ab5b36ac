#include <Subsystem/Registry.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace vo::subsystem {

namespace {

enum class State
{
    Stopped,
    Starting,
    Running,
    Stopping
};

// All but the definition under the registry's mutex.
struct Entry
{
    const Definition definition;
    State state = State::Stopped;
    std::thread::id worker{};    // who starts or stops it
    std::uint64_t change = 0;    // the number of that start or stop, among those of all
    std::uint64_t run = 0;       // the number of its last start that ended well, among those of all
    std::size_t asked = 0;       // starts by users
    std::size_t holders = 0;     // subsystems that hold it
    std::vector<Entry*> holds{}; // what it needs and what its start() has started, in the order of their starts
};

using Path = std::vector<const Entry*>;

bool IsChanging(const Entry& entry)
{
    return entry.state == State::Starting || entry.state == State::Stopping;
}

bool IsUnused(const Entry& entry)
{
    return entry.state == State::Running && entry.asked == 0 && entry.holders == 0;
}

[[noreturn]] void ThrowCircle(const Path& path)
{
    VoString names;
    for (const Entry* const entry : path)
        names += (names.isEmpty() ? VoString() : VoString(", ")) + entry->definition.name;
    throw VoInvalidCallException("Subsystems need each other: " + names);
}

void StopGuarded(const Definition& definition) noexcept
{
    try {
        if (definition.stop)
            definition.stop();
    } catch (...) {
        logging::Logger::Get("subsystem")
            .error("Subsystem " + definition.name + " failed to stop (" + CurrentExceptionText() + ")");
    }
}

} // namespace

struct Registry::Private
{
    using Lock = std::unique_lock<std::mutex>;

    Entry& get(const VoString& name) const;
    Entry* changingHere() const;
    Entry* changingElsewhere() const;
    Entry* lastStarted() const;
    void requireNoCircle(const Entry& entry, Path& path, std::set<const Entry*>& checked) const;
    void requireEndingWait(const Entry& wanted) const;
    void waitFor(const Entry& wanted, Lock& lock);
    void bringUp(Entry& entry, Lock& lock);
    void begin(Entry& entry, Lock& lock);
    void startWithNeeds(Entry& entry, Lock& lock);
    void hold(Entry& holder, Entry& held, Lock& lock);
    void endIfUnused(Entry& entry, Lock& lock) noexcept;
    void letGoOfAll(Entry& holder, Lock& lock) noexcept;
    bool letGoOf(Entry& holder, Entry& held, Lock& lock) noexcept;
    void settle(Entry& entry, State state) noexcept;

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::map<VoString, std::unique_ptr<Entry>> entries; // the names compare without case
    std::map<std::thread::id, const Entry*> waiting;    // which thread waits for which subsystem
    std::uint64_t changes = 0;
    std::uint64_t runs = 0;
};

Entry& Registry::Private::get(const VoString& name) const
{
    const auto found = entries.find(name);
    if (found == entries.end())
        throw VoNotFoundException("Subsystem " + name);
    return *found->second;
}

// The subsystem within whose start or stop this thread is: the innermost.
Entry* Registry::Private::changingHere() const
{
    Entry* innermost = nullptr;
    for (const auto& [name, entry] : entries) {
        if (IsChanging(*entry) && entry->worker == std::this_thread::get_id() &&
            (!innermost || entry->change > innermost->change))
            innermost = entry.get();
    }
    return innermost;
}

Entry* Registry::Private::changingElsewhere() const
{
    for (const auto& [name, entry] : entries) {
        if (IsChanging(*entry) && entry->worker != std::this_thread::get_id())
            return entry.get();
    }
    return nullptr;
}

// Of those that run and that nothing holds which is just changing.
Entry* Registry::Private::lastStarted() const
{
    Entry* last = nullptr;
    for (const auto& [name, entry] : entries) {
        if (entry->state == State::Running && entry->holders == 0 && (!last || entry->run > last->run))
            last = entry.get();
    }
    return last;
}

void Registry::Private::requireNoCircle(const Entry& entry, Path& path, std::set<const Entry*>& checked) const
{
    const auto met = std::find(path.begin(), path.end(), &entry) - path.begin();
    path.push_back(&entry);
    if (met + 1 < static_cast<std::ptrdiff_t>(path.size()))
        ThrowCircle(Path(path.begin() + met, path.end()));
    if (checked.insert(&entry).second) {
        for (const VoString& need : entry.definition.needs)
            requireNoCircle(get(need), path, checked);
    }
    path.pop_back();
}

// Follows who waits for whom: a way that comes back to this thread would never end.
void Registry::Private::requireEndingWait(const Entry& wanted) const
{
    const Entry* const own = changingHere();
    Path path{own};
    for (const Entry* next = &wanted; next && IsChanging(*next);) {
        path.push_back(next);
        if (next->worker == std::this_thread::get_id()) {
            if (next != own || path.size() == 1)
                path.push_back(own);
            ThrowCircle(path);
        }
        const auto further = waiting.find(next->worker);
        next = further == waiting.end() ? nullptr : further->second;
    }
}

void Registry::Private::waitFor(const Entry& wanted, Lock& lock)
{
    const std::thread::id self = std::this_thread::get_id();
    while (IsChanging(wanted)) {
        requireEndingWait(wanted);
        waiting[self] = &wanted;
        changed.wait(lock);
        waiting.erase(self);
    }
}

// The entry runs when this returns, and the lock has been held since it was found running.
void Registry::Private::bringUp(Entry& entry, Lock& lock)
{
    while (entry.state != State::Running) {
        if (entry.state == State::Stopped)
            begin(entry, lock);
        else
            waitFor(entry, lock);
    }
}

void Registry::Private::begin(Entry& entry, Lock& lock)
{
    entry.state = State::Starting;
    entry.worker = std::this_thread::get_id();
    entry.change = ++changes;
    try {
        startWithNeeds(entry, lock);
    } catch (...) {
        if (!lock.owns_lock())
            lock.lock();
        letGoOfAll(entry, lock);
        settle(entry, State::Stopped);
        throw;
    }
    entry.run = ++runs;
    settle(entry, State::Running);
}

void Registry::Private::startWithNeeds(Entry& entry, Lock& lock)
{
    for (const VoString& need : entry.definition.needs)
        hold(entry, get(need), lock);
    lock.unlock();
    if (entry.definition.start)
        entry.definition.start();
    lock.lock();
}

void Registry::Private::hold(Entry& holder, Entry& held, Lock& lock)
{
    holder.holds.reserve(holder.holds.size() + 1); // so that nothing fails once it runs
    bringUp(held, lock);
    ++held.holders;
    holder.holds.push_back(&held);
}

void Registry::Private::endIfUnused(Entry& entry, Lock& lock) noexcept
{
    if (!IsUnused(entry))
        return;
    entry.state = State::Stopping;
    entry.worker = std::this_thread::get_id();
    entry.change = ++changes;
    lock.unlock();
    StopGuarded(entry.definition);
    lock.lock();
    letGoOfAll(entry, lock);
    settle(entry, State::Stopped);
}

void Registry::Private::letGoOfAll(Entry& holder, Lock& lock) noexcept
{
    while (!holder.holds.empty())
        letGoOf(holder, *holder.holds.back(), lock);
}

bool Registry::Private::letGoOf(Entry& holder, Entry& held, Lock& lock) noexcept
{
    const auto found = std::find(holder.holds.rbegin(), holder.holds.rend(), &held);
    if (found == holder.holds.rend())
        return false;
    holder.holds.erase(found.base() - 1);
    --held.holders;
    endIfUnused(held, lock);
    return true;
}

void Registry::Private::settle(Entry& entry, State state) noexcept
{
    entry.state = state;
    entry.worker = std::thread::id();
    changed.notify_all();
}

Registry& Registry::Global()
{
    static Registry& registry = *new Registry; // never destroyed: subsystems may be asked for while the process ends
    return registry;
}

Registry::Registry()
    : m_private(std::make_unique<Private>())
{
}

Registry::~Registry()
{
    stopAll();
}

void Registry::add(Definition definition)
{
    if (definition.name.isEmpty())
        throw VoInvalidParameterException("Subsystem without a name");
    const std::lock_guard lock(m_private->mutex);
    if (m_private->entries.count(definition.name) > 0)
        throw VoInvalidCallException("Subsystem already known: " + definition.name);
    const VoString name = definition.name;
    m_private->entries.emplace(name, std::unique_ptr<Entry>(new Entry{std::move(definition)}));
}

Registry::Claim Registry::claim(const VoString& name)
{
    Private::Lock lock(m_private->mutex);
    Entry& entry = m_private->get(name);
    Path path;
    std::set<const Entry*> checked;
    m_private->requireNoCircle(entry, path, checked);
    Entry* const holder = m_private->changingHere();
    if (holder) {
        m_private->hold(*holder, entry, lock);
    } else {
        m_private->bringUp(entry, lock);
        ++entry.asked;
    }
    return {entry.run, holder};
}

void Registry::giveBack(const VoString& name, const Claim& claim) noexcept
{
    Private::Lock lock(m_private->mutex);
    Entry& entry = *m_private->entries.find(name)->second;
    if (entry.run != claim.run)
        return;
    if (claim.holder) {
        m_private->letGoOf(*static_cast<Entry*>(claim.holder), entry, lock);
    } else if (entry.asked > 0) {
        --entry.asked;
        m_private->endIfUnused(entry, lock);
    }
}

void Registry::start(const VoString& name)
{
    static_cast<void>(claim(name));
}

void Registry::stop(const VoString& name)
{
    Private::Lock lock(m_private->mutex);
    Entry& entry = m_private->get(name);
    if (Entry* const holder = m_private->changingHere(); holder && m_private->letGoOf(*holder, entry, lock))
        return;
    if (entry.asked == 0)
        throw VoInvalidCallException("Subsystem is not started: " + entry.definition.name);
    --entry.asked;
    m_private->endIfUnused(entry, lock);
}

void Registry::stopAll() noexcept
try {
    Private::Lock lock(m_private->mutex);
    for (;;) {
        if (const Entry* const changing = m_private->changingElsewhere()) {
            m_private->waitFor(*changing, lock);
        } else if (Entry* const last = m_private->lastStarted()) {
            last->asked = 0;
            m_private->endIfUnused(*last, lock);
        } else {
            return;
        }
    }
} catch (...) {
    logging::Logger::Get("subsystem").error("Subsystems cannot all be stopped (" + CurrentExceptionText() + ")");
}

bool Registry::isKnown(const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    return m_private->entries.count(name) > 0;
}

bool Registry::isRunning(const VoString& name) const
{
    const std::lock_guard lock(m_private->mutex);
    return m_private->get(name).state == State::Running;
}

VoDeque<VoString> Registry::running() const
{
    std::map<std::uint64_t, VoString> names;
    {
        const std::lock_guard lock(m_private->mutex);
        for (const auto& [name, entry] : m_private->entries) {
            if (entry->state == State::Running)
                names.emplace(entry->run, entry->definition.name);
        }
    }
    VoDeque<VoString> ordered;
    for (const auto& [run, name] : names)
        ordered.push_back(name);
    return ordered;
}

Running::Running(Registry& registry, const VoString& name)
    : m_registry(registry)
    , m_name(name)
    , m_claim(registry.claim(name))
{
}

Running::~Running()
{
    m_registry.giveBack(m_name, m_claim);
}

} // namespace vo::subsystem
