#include <Updater/detail/registry/SharedRegistry.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/registry/RegistryFile.h>

namespace vo::updater::detail {

SharedRegistry& SharedRegistry::Get()
{
    static SharedRegistry& shared = *new SharedRegistry;
    return shared;
}

Registry::Entries SharedRegistry::packages()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return registry().entries();
}

bool SharedRegistry::has(const VoUUID& packageID)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return registry().find(packageID) != nullptr;
}

void SharedRegistry::readAnew()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_registry.reset();
    registry();
}

bool SharedRegistry::set(const VoUUID& packageID, const VoVersion& version)
{
    return change([&](Registry& registry) { registry.set(packageID, version); });
}

bool SharedRegistry::erase(const VoUUID& packageID)
{
    return change([&](Registry& registry) { registry.erase(packageID); });
}

// With the mutex held.
Registry& SharedRegistry::registry()
{
    const VoFilePath path = VoUpdater::InstalledPackagesPath();
    if (!m_registry || Bytes(m_readFrom) != Bytes(path)) {
        VoString whyNot;
        m_registry = ReadRegistry(path, whyNot);
        m_readFrom = path;
        if (!m_registry)
            throw vo::detail::Completed(VoNullPointerException("VoUniquePtr dereferencing nullptr"), path.path(),
                                        whyNot);
    }
    return *m_registry;
}

template <typename Change>
bool SharedRegistry::change(Change change)
{
    std::unique_lock<std::mutex> guard(m_mutex);
    change(registry());
    const Registry changed = registry();
    guard.unlock();
    return WriteRegistry(VoUpdater::InstalledPackagesPath(), changed);
}

} // namespace vo::updater::detail
