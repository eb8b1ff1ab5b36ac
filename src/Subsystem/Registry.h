#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>

#include <cstdint>
#include <functional>
#include <memory>

/// Start-up and orderly end of the parts of an application.
namespace vo::subsystem {

/// One part of an application: what it is called, what must run before it, and how it starts and stops.
struct VOCORE_EXPORT Definition
{
    VoString name;                 ///< Names ignore case; not empty.
    VoDeque<VoString> needs{};     ///< The names of those that run as long as this one runs.
    std::function<void()> start{}; ///< Starts it; what it throws passes to whoever asked. May be empty.
    std::function<void()> stop{};  ///< Stops it; what it throws is logged. May be empty.
};

/// Knows subsystems, starts what is asked for and what that needs, and stops everything in reverse.
///
///     Registry& registry = Registry::Global();
///     registry.add({"network", {}, [] { openNetwork(); }, [] { closeNetwork(); }});
///     registry.add({"licence", {"network"}, [] { checkLicence(); }, {}});
///     {
///         const Running licence(registry, "licence");   // starts "network", then "licence"
///     }                                                 // stops "licence", then "network"
///
/// Starting counts: a subsystem stops when it has been stopped as often as it was started and nothing that runs needs
/// it. What start() of a subsystem itself starts on its thread counts as needed by it: it is let go when the subsystem
/// has stopped, or when its start has failed.
///
/// Any thread may call any member, no lock is held while start() and stop() of a subsystem run. Who starts what another
/// thread is just starting waits for that; if it failed there, it is tried anew. Waits that would never end throw.
/// Members that take a name throw VoNotFoundException("Subsystem " + name) for one that is not known.
class VOCORE_EXPORT Registry
{
public:
    /// The registry of the process, which lives until the process ends. It does not stop anything by itself:
    /// VoApplication does, at its end.
    static Registry& Global();

    Registry();  ///< Without subsystems.
    ~Registry(); ///< As stopAll().
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    /// Makes a subsystem known; those that it needs may follow later.
    /// @throws VoInvalidParameterException "Subsystem without a name"
    /// @throws VoInvalidCallException "Subsystem already known: " and the name
    void add(Definition definition);

    /// Starts a subsystem, after all that it needs, or counts where it runs already. When that fails, what was started
    /// for it is stopped again, in reverse, and the failure passes on. Nothing is started when one that is needed is
    /// not known, or when the needs go in a circle: VoInvalidCallException "Subsystems need each other: a, b, a". The
    /// same is thrown when start() or stop() of a subsystem asks for what waits for it, on this thread or through
    /// others.
    void start(const VoString& name);

    /// Takes one start() back, and stops the subsystem and what only it needed when that was the last. Failures of a
    /// stop() function are logged in the category "subsystem", and the rest goes on.
    /// @throws VoInvalidCallException "Subsystem is not started: " and the name, for one that nobody has started who
    /// could stop it
    void stop(const VoString& name);

    /// Stops all that runs, the last started first, however often it was started; waits for those that other threads
    /// are just starting or stopping. Within start() or stop() of a subsystem, what that one holds stays; where waiting
    /// would never end, that is logged and the rest stays.
    void stopAll() noexcept;

    bool isKnown(const VoString& name) const;   ///< Whether there is such a subsystem. Never throws.
    bool isRunning(const VoString& name) const; ///< Whether its start has ended well and its stop has not begun.
    VoDeque<VoString> running() const;          ///< What runs, the first started first.

private:
    friend class Running;
    struct Private;

    // One start(), and who takes it back: a user, or the subsystem within whose start() or stop() it was made.
    struct Claim
    {
        std::uint64_t run = 0; // which of the subsystem's runs it is for
        void* holder = nullptr;
    };

    Claim claim(const VoString& name);
    void giveBack(const VoString& name, const Claim& claim) noexcept;

    std::unique_ptr<Private> m_private;
};

/// Keeps a subsystem running while it lives.
class VOCORE_EXPORT Running
{
public:
    /// As Registry::start(). The registry must outlive the object.
    Running(Registry& registry, const VoString& name);
    /// As Registry::stop(), unless stopAll() has stopped the subsystem meanwhile.
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    Registry& m_registry;
    const VoString m_name;
    const Registry::Claim m_claim;
};

} // namespace vo::subsystem
