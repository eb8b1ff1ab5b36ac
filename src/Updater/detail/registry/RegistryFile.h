#pragma once

// The files of the registry of installed packages, and the lock that keeps processes apart.

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <Updater/detail/registry/Registry.h>

#include <initializer_list>
#include <memory>
#include <string_view>

class VoFileLock;

namespace vo::updater::detail {

/// Reads a registry file. A missing one gives an empty registry. One that cannot be read gives an empty pointer, after
/// an error was logged, and `whyNot` the reason: a caller that began anew would erase what it records.
VoUniquePtr<Registry> ReadRegistry(const VoFilePath& path, VoString& whyNot);

/// Writes one. False when that failed, which is logged.
bool WriteRegistry(const VoFilePath& path, const Registry& registry);

/// Removes what killed processes left in the directory of the listings while they replaced a document. Only while no
/// other process can be replacing one.
VOCORE_PRIVATE_EXPORT void EraseTemporaryDocuments(const VoDirectoryPath& directory,
                                                   std::initializer_list<std::string_view> suffixes = {
                                                       ".xml", ".pending", ".damaged", ".attributes", ".seen"});

/// Keeps all other processes from changing what is installed, as long as it lives.
class VOCORE_PRIVATE_EXPORT ProcessLock
{
public:
    /// Makes the directory if needed and locks it. No lock outlives its process.
    /// @throws VoFileLockedException when another process has locked it
    /// @throws VoCannotOpenFileException when the lock's file cannot be made
    explicit ProcessLock(const VoDirectoryPath& directory);
    ~ProcessLock();
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

private:
    std::unique_ptr<VoFileLock> m_lock;
};

} // namespace vo::updater::detail
