#include <Updater/detail/publish/PublishingFolder.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/XMLDocument.h>

namespace vo::updater::detail {

namespace {

constexpr const char* LockName = ".publishing.lock";
constexpr const char* MarkName = ".publishing"; // stays when somebody looks whether the lock is free

// Whether the folder is one of ours whose process has ended.
bool IsDead(const VoDirectoryPath& folder)
{
    return VoFileSystem::Exists(folder.file(MarkName)) && VoFileLock(folder.file(LockName)).isHeld();
}

std::uint64_t BytesIn(const VoDirectoryPath& folder)
{
    std::uint64_t bytes = 0;
    VoFileSystem::ForEachFile(folder, true, false,
                              [&bytes](const VoFilePath& file) { bytes += VoFileSystem::FileSize(file); });
    return bytes;
}

} // namespace

LivingFolder::LivingFolder(const VoDirectoryPath& folder)
    : m_lock(folder.file(LockName))
{
    WriteBytes(folder.file(MarkName), VoString());
}

std::pair<std::uint64_t, std::uint64_t> RemoveDeadFolders(bool onlyLook)
{
    std::pair<std::uint64_t, std::uint64_t> removed;
    VoFileSystem::ForEachDirectory(VoFileSystem::TempDirectory(), false, [&](const VoDirectoryPath& folder) {
        // Others may keep folders here that nobody else may look into.
        try {
            if (!IsDead(folder))
                return;
            const std::uint64_t bytes = BytesIn(folder);
            if (!onlyLook)
                VoFileSystem::RemoveAll(folder);
            ++removed.first;
            removed.second += bytes;
        } catch (const VoException&) {
            PublishingLog().diagnostic("Temporary folder left as it is: " + folder.path() + ": " +
                                       CurrentExceptionText());
        }
    });
    return removed;
}

} // namespace vo::updater::detail
