#include <Updater/VoUpdater.h>

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/SafePath.h>
#include <Updater/detail/documents/Log.h>

#include <mutex>

namespace {

struct SystemDirectory
{
    std::mutex mutex;
    bool overridden = false;
    VoDirectoryPath directory;
};

// Never destroyed: the updater may be asked for its place while the process ends.
SystemDirectory& Override()
{
    static SystemDirectory& instance = *new SystemDirectory;
    return instance;
}

} // namespace

// On Windows no object of the library would have them otherwise, for those who refer to them.
// NOLINTBEGIN(readability-redundant-declaration)
constexpr const char* VoUpdater::ReleaseChannel;
constexpr const char* VoUpdater::BetaChannel;
constexpr const char* VoUpdater::ReleasePackagesDirectory;
constexpr const char* VoUpdater::BetaPackagesDirectory;
// NOLINTEND(readability-redundant-declaration)

VoDirectoryPath VoUpdater::UpdateSystemDirectory()
{
    SystemDirectory& place = Override();
    {
        const std::lock_guard<std::mutex> lock(place.mutex);
        if (place.overridden)
            return place.directory;
    }
    return VoFileSystem::Directory(VoFileSystem::ApplicationData).directory("updates");
}

VoDirectoryPath VoUpdater::DownloadDirectory()
{
    return UpdateSystemDirectory().directory("download");
}

VoDirectoryPath VoUpdater::InstalledListingDirectory()
{
    return UpdateSystemDirectory().directory("installed");
}

VoFilePath VoUpdater::InstalledPackagesPath()
{
    return InstalledListingDirectory().file("packages.xml");
}

void VoUpdater::OverrideUpdateSystemDirectory(const VoDirectoryPath& directory)
{
    SystemDirectory& place = Override();
    {
        const std::lock_guard<std::mutex> lock(place.mutex);
        place.directory = directory;
        place.overridden = true;
    }
    vo::updater::detail::Log().diagnostic("VoUpdater system directory overriden to " + directory.path());
}

bool VoUpdater::IsIdentifier(const VoString& text)
{
    return vo::detail::SafeName(text);
}

VoUUID VoUpdater::GenerateID()
{
    return VoUUID(VoUUID::WithoutBraces);
}
