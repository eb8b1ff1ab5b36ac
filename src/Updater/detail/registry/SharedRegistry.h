#pragma once

#include <Updater/detail/registry/Registry.h>

#include <Core/VoUniquePtr.h>
#include <FileSystem/VoFilePath.h>

#include <mutex>

namespace vo::updater::detail {

/// The registry as this process knows it: read when it is first asked for, and again whenever the update directory has
/// changed. Any thread may ask; those that change it are kept apart by who calls (OperationGate, ProcessLock).
///
/// A file that is there but cannot be read is never replaced: everything that needs it throws VoNullPointerException
/// ("VoUniquePtr dereferencing nullptr") after logging an error with its path.
class SharedRegistry
{
public:
    static SharedRegistry& Get(); ///< The only one. Never destroyed: threads may outlive the static objects.

    Registry::Entries packages();      ///< All entries.
    bool has(const VoUUID& packageID); ///< Whether there is an entry of the package.
    void readAnew();                   ///< Learns what other processes did.

    /// @{
    /// Change it and write its file. False when that could not be written, which is logged.
    bool set(const VoUUID& packageID, const VoVersion& version);
    bool erase(const VoUUID& packageID);
    /// @}

private:
    SharedRegistry() = default;

    Registry& registry();
    template <typename Change>
    bool change(Change change);

    std::mutex m_mutex; // guards what follows, for moments only: receivers of an operation's messages ask, too
    VoUniquePtr<Registry> m_registry;
    VoFilePath m_readFrom;
};

} // namespace vo::updater::detail
