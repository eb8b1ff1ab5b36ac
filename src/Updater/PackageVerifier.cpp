#include <Updater/PackageVerifier.h>

#include <Core/VoFileException.h>
#include <Download/VoDownloadPolicy.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <IO/VoIOException.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/install/EventReport.h>
#include <Updater/detail/install/InstallerSettings.h>

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
    Comparison(const AdvertisedPackageListing& package, const MessageReceiver& callback)
        : m_package(package)
        , m_ids(package.packageID().toString() + ", " + package.versionID().toString())
        , m_report(package.packageID(), package.versionID(), callback, &PublishingLog(), EventReport::Label::None)
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
        return runAttributes(source, installed) && isSame;
    }

    const VoString& ids() const { return m_ids; }

private:
    bool compare(const VoFilePath& target, const VoFilePath& source, const VoFilePath& installed) const
    {
        if (!VoFileSystem::Exists(source))
            return fail(AbstractMessage::FileMissing, "Original file missing for listing: ", "Original file missing ",
                        target);
        if (!VoFileSystem::Exists(installed))
            return fail(AbstractMessage::FileMissing, "Installed file missing for listing: ", "Installed file missing ",
                        target);
        if (!IsSame(source, installed))
            return fail(AbstractMessage::FileMismatch, "Files do not match: ", "Files do not math ", target);
        return true;
    }

    // What the release says it has. Where links are copied, the files have shown that they can be.
    bool runAttributes(const VoDirectoryPath& source, const VoDirectoryPath& installed) const
    {
        bool isSame = true;
        const ReleaseAttributes& attributes = *m_package.attributes();
        const auto requireSame = [&](bool holds, const VoFilePath& target) {
            if (!holds)
                isSame = fail(AbstractMessage::FileMismatch, "Files do not match: ", "Files do not match ", target);
        };
        for (const ReleaseAttributes::Link& link : attributes.links) {
            const auto isThere = [&](const VoDirectoryPath& root) {
                const auto to = ReadLink(root.appended(link.target));
                return to && to->equal(link.to, VoString::CaseSensitive);
            };
            requireSame(LinksAreCopies() || (isThere(source) && isThere(installed)), link.target);
        }
        for (const VoFilePath& program : attributes.executables)
            requireSame(IsExecutable(source.appended(program)) && IsExecutable(installed.appended(program)), program);
        for (const VoFilePath& folder : attributes.folders)
            requireSame(VoFileSystem::IsDirectory(AsDirectory(source.appended(folder))) &&
                            VoFileSystem::IsDirectory(AsDirectory(installed.appended(folder))),
                        folder);
        return isSame;
    }

    bool fail(AbstractMessage::Type type, const char* message, const char* logged, const VoFilePath& target) const
    {
        m_report.report(type, message + target.path(),
                        "Package verification failed for [" + m_ids + "]: " + logged + target.path());
        return false;
    }

    const AdvertisedPackageListing& m_package;
    const VoString m_ids;
    const EventReport m_report;
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
    FindDocuments(*package, definitionFile, stop, VoDownloadPolicy());
    const AdvertisedPackageListing advert = *package;
    const Comparison comparison(advert, callback);
    PublishingLog().diagnostic("Starting package verification process for [" + comparison.ids() + "]");

    const VoTemporaryDir temporary;
    const VoDirectoryPath installed = temporary.path().directory("installed");
    InstallerSettings settings;
    settings.staging = temporary.path().directory("staging");
    settings.isTemporary = true;
    ConfiguredInstaller installer(std::move(package), installed, {}, settings);
    const VoReceiver receiver = callback ? installer.connect(callback) : VoReceiver();
    installer.run(definitionFile, stop);

    const bool isSame = comparison.run(sourceDirectory, installed, stop);
    if (isSame)
        PublishingLog().diagnostic("Package verification success [" + comparison.ids() + "]");
    else
        PublishingLog().error("Package verification failed [" + comparison.ids() + "]");
    return isSame;
}

} // namespace vo::updater
