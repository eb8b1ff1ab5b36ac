#include <Updater/PackageVerifier.h>

#include <Core/VoFileException.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <IO/VoIOException.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>
#include <Updater/PackageInstaller.h>
#include <Updater/detail/install/FileContent.h>
#include <Updater/detail/install/InstallerPrivate.h>

namespace vo::updater {

using namespace detail;

namespace {

bool IsSame(const VoFilePath& a, const VoFilePath& b)
{
    try {
        return HaveSameContent(a, b);
    } catch (const VoFileException&) {
        return false;
    } catch (const VoIOException&) {
        return false;
    }
}

// Compares the installed files with those that the release was built from.
class Comparison
{
public:
    using Callback = std::function<void(const VoSharedPtr<AbstractMessage>&)>;

    Comparison(const AdvertisedPackageListing& package, const Callback& callback)
        : m_package(package)
        , m_callback(callback)
        , m_ids(package.packageID().toString() + ", " + package.versionID().toString())
    {
    }

    bool run(const VoDirectoryPath& source, const VoDirectoryPath& installed, const VoStopFlag& stop) const
    {
        bool isSame = true;
        for (const AdvertisedFileListing& file : m_package.files()) {
            stop.throwIfStopped();
            isSame =
                compare(file.target(), source.appended(file.target()), installed.appended(file.target())) && isSame;
        }
        return isSame;
    }

    const VoString& ids() const { return m_ids; }

private:
    bool compare(const VoFilePath& target, const VoFilePath& source, const VoFilePath& installed) const
    {
        if (!VoFileSystem::Exists(source))
            return fail<15>("Original file missing for listing: ", "Original file missing ", target);
        if (!VoFileSystem::Exists(installed))
            return fail<15>("Installed file missing for listing: ", "Installed file missing ", target);
        if (!IsSame(source, installed))
            return fail<14>("Files do not match: ", "Files do not math ", target);
        return true;
    }

    template <int Code>
    bool fail(const char* message, const char* logged, const VoFilePath& target) const
    {
        vo::logging::Logger::Get("update builder")
            .error("Package verification failed for [" + m_ids + "]: " + logged + target.path());
        if (m_callback)
            m_callback(Message<BasicUpdateMessage<Code>>(message + target.path(), m_package.packageID(),
                                                         m_package.versionID()));
        return false;
    }

    const AdvertisedPackageListing& m_package;
    const Callback& m_callback;
    const VoString m_ids;
};

} // namespace

bool PackageVerifier::Verify(VoUniquePtr<AdvertisedPackageListing> package, const VoFilePath& definitionFile,
                             const VoDirectoryPath& sourceDirectory,
                             std::function<void(const VoSharedPtr<AbstractMessage>&)> callback)
{
    return Verify(std::move(package), definitionFile, sourceDirectory, std::move(callback), VoStopFlag());
}

bool PackageVerifier::Verify(VoUniquePtr<AdvertisedPackageListing> package, const VoFilePath& definitionFile,
                             const VoDirectoryPath& sourceDirectory,
                             std::function<void(const VoSharedPtr<AbstractMessage>&)> callback, VoStopFlag stop)
{
    const AdvertisedPackageListing advert = *package;
    const Comparison comparison(advert, callback);
    vo::logging::Logger& log = vo::logging::Logger::Get("update builder");
    log.diagnostic("Starting package verification process for [" + comparison.ids() + "]");

    const VoTemporaryDir temporary;
    const VoDirectoryPath installed = temporary.path().directory("installed");
    InstallerSettings settings;
    settings.staging = temporary.path().directory("staging");
    settings.isTemporary = true;
    PackageInstaller installer(std::move(package), installed, {}, settings);
    const VoReceiver receiver = callback ? installer.connect(callback) : VoReceiver();
    installer.run(definitionFile, stop);

    const bool isSame = comparison.run(sourceDirectory, installed, stop);
    if (isSame)
        log.diagnostic("Package verification success [" + comparison.ids() + "]");
    else
        log.error("Package verification failed [" + comparison.ids() + "]");
    return isSame;
}

} // namespace vo::updater
