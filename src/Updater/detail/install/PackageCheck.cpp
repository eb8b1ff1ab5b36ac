#include <Updater/detail/install/PackageCheck.h>

#include <Core/VoChecksum.h>
#include <Core/VoFileException.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoStopFlag.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/documents/Containment.h>
#include <Updater/detail/install/FileContent.h>
#include <Updater/detail/install/FileOwners.h>
#include <Updater/detail/install/InstallerPrivate.h>

#include <algorithm>
#include <string>
#include <unordered_set>

namespace vo::updater::detail {

namespace {

bool IsUnchanged(const InstalledFileListing& file)
{
    return !VoFileSystem::IsDirectory(file.path()) && file.size() == VoFileSystem::FileSize(file.path()) &&
           HasChecksum(file.path(), file.checksum());
}

// Recorded directories from the installation directory downwards that do not lie in another one of them.
VoDeque<VoDirectoryPath> OutermostDirectories(const InstalledPackageListing& listing)
{
    const std::string_view root = Bytes(listing.installationDirectory());
    VoDeque<VoDirectoryPath> result;
    std::unordered_set<std::string> recorded;
    for (const VoDirectoryPath& directory : listing.directories()) {
        if (Bytes(directory).substr(0, root.size()) == root)
            recorded.emplace(Bytes(directory));
    }
    for (const VoDirectoryPath& directory : listing.directories()) {
        if (recorded.count(std::string(Bytes(directory))) > 0 &&
            recorded.count(std::string(Bytes(directory.parent()))) == 0)
            result.pushBack(directory);
    }
    return result;
}

class Check
{
public:
    using Broadcast = std::function<void(const VoSharedPtr<AbstractMessage>&)>;

    Check(const InstalledPackageListing& listing, FileOwners& owners, const VoStopFlag& stop,
          const Broadcast& broadcast)
        : m_listing(listing)
        , m_owners(owners)
        , m_stop(stop)
        , m_broadcast(broadcast)
    {
        m_result.report.packageID = listing.packageID();
        m_result.report.versionID = listing.versionID();
    }

    PackageCheck run()
    {
        send<BasicUpdateMessage<12>>("Starting installation verification");
        for (const InstalledFileListing& file : m_listing.files()) {
            m_stop.throwIfStopped();
            checkFile(file);
            ++m_result.report.filesChecked;
            m_broadcast(Message<VerificationProgressMessage>(m_result.report.filesChecked, m_listing.files().size(),
                                                             m_listing.packageID(), m_listing.versionID()));
        }
        for (const VoDirectoryPath& directory : OutermostDirectories(m_listing))
            findExtra(directory);
        VoDeque<VoFilePath>& extra = m_result.report.extra;
        std::sort(extra.begin(), extra.end(),
                  [](const VoFilePath& a, const VoFilePath& b) { return Bytes(a) < Bytes(b); });
        if (m_result.report.isIntact())
            send<BasicUpdateMessage<16>>("Installation verification success");
        else
            send<BasicUpdateMessage<17>>("Installation verification failed");
        return std::move(m_result);
    }

private:
    template <typename M>
    void send(const VoString& text) const
    {
        m_broadcast(Message<M>(text, m_listing.packageID(), m_listing.versionID()));
    }

    void checkFile(const InstalledFileListing& file)
    {
        m_listed.emplace(Bytes(file.path()));
        if (!VoFileSystem::Exists(file.path())) {
            m_result.report.missing.pushBack(file.path());
            send<BasicUpdateMessage<15>>("File missing: " + file.path().path());
        } else if (!IsUnchanged(file)) {
            m_result.report.changed.pushBack(file.path());
            send<BasicUpdateMessage<14>>("File checksum mismatch: " + file.path().path());
        } else {
            return;
        }
        m_result.damaged.pushBack(file.id());
    }

    void findExtra(const VoDirectoryPath& directory)
    {
        if (!VoFileSystem::IsDirectory(directory))
            return;
        try {
            VoFileSystem::ForEachFile(directory, true, false, [this](const VoFilePath& path) {
                m_stop.throwIfStopped();
                if (m_listed.count(std::string(Bytes(path))) == 0 && !m_owners.find(path))
                    m_result.report.extra.pushBack(path);
            });
        } catch (const VoFileException& failure) {
            vo::logging::Logger::Get("updater").warning(
                "Directory cannot be searched for extra files: " + directory.path() + ": " + failure.message());
        }
    }

    const InstalledPackageListing& m_listing;
    FileOwners& m_owners;
    const VoStopFlag& m_stop;
    const Broadcast& m_broadcast;
    PackageCheck m_result;
    std::unordered_set<std::string> m_listed;
};

} // namespace

PackageCheck CheckPackage(const InstalledPackageListing& listing, FileOwners& owners, const VoStopFlag& stop,
                          const std::function<void(const VoSharedPtr<AbstractMessage>&)>& broadcast)
{
    return Check(listing, owners, stop, broadcast).run();
}

} // namespace vo::updater::detail
