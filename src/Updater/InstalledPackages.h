#pragma once

#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUUID.h>
#include <Core/VoUniquePtr.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>
#include <Updater/InstallationOptions.h>
#include <Updater/InstallationPlan.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageUpdate.h>
#include <Updater/StagedInstallation.h>
#include <Updater/TrustPolicy.h>
#include <Updater/UpdateMessages.h>
#include <Updater/VerificationReport.h>
#include <Updater/XMLObject.h>

#include <functional>
#include <future>
#include <memory>

namespace vo::updater {

class AdvertisedPackageListing;

/// The registry of what is installed, and the way to install, repair and uninstall.
///
///     <update directory>\installed\packages.xml       the registry:
///         <packages>
///             <package id version/> ...
///         </packages>
///     <update directory>\installed\<packageID>.xml    one listing for each package
///
/// All operations are static and work on one registry a process, read when first used and again whenever the update
/// directory changes. Installing, repairing and uninstalling exclude each other, also between processes; each of them
/// reads the registry anew before it changes it. They may be called on any thread; receivers are called on the thread
/// that does the work and may use Package, Packages and Connect.
///
/// A process may be killed at any moment. The next operation, whichever it is and of whichever package, first ends what
/// was interrupted: an installation is undone or completed as a whole, an uninstallation of files that were all gone is
/// recorded. Listings and registry are replaced atomically, the listing first. Files of one package are never replaced
/// or removed by an operation on another.
///
/// A thread that owns the download service (VoDownloadManager::IsOwner) waits for another one's operation with its
/// event loop running, because that one may be waiting for a download. So events arrive in the meantime.
///
/// Failures that Install, Commit, Repair and Uninstall share: VoInvalidCallException ("An installation is already
/// running") when this thread is in one of them already, as a receiver is, or would have to wait and cannot run the
/// event loop that others need: in a callback of the download service, or when the application is quitting. A registry
/// file that is there but cannot be read is never replaced: everything that needs it throws VoNullPointerException
/// ("VoUniquePtr dereferencing nullptr") after logging an error with its path.
class VOCORE_EXPORT InstalledPackages : public XMLObject
{
public:
    /// Receives the messages of all operations.
    [[nodiscard]] static VoReceiver Connect(std::function<void(const VoSharedPtr<AbstractMessage>&)> callback);

    /// @{
    /// Installs a release from its definition file or from the URL of its advert, over the installed release of the
    /// package if there is one, and records it. A relative directory is taken from the current one.
    ///
    /// Installing an older version than the installed one is done, with a warning. Every failure, that of reading the
    /// definition included, throws VoInstallationFailedException with "Installation failed: " and the cause's text;
    /// another process that is installing is the failure "File already locked: " + path. Files, listing and registry
    /// are as they were then. A registry that cannot be written after the listing was written is only logged: the
    /// package is unfinished, and the next operation mends it.
    ///
    /// A place that another package owns is the failure "File belongs to another package: " + path. The options tell
    /// what else is refused.
    ///
    /// A URL needs the download service (VoDownloadManager).
    static void Install(const VoFilePath& definitionFile, const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                        const InstallationOptions& options = InstallationOptions());
    static void Install(const VoUrl& advertUrl, const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                        const InstallationOptions& options = InstallationOptions());
    static void Install(const VoLocation& definition, const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                        const InstallationOptions& options = InstallationOptions());
    /// @}

    /// As above, for a definition that was read from there already. It is not read again: what is installed is what the
    /// caller has looked at, whatever the file or the server holds by now.
    static void Install(VoUniquePtr<AdvertisedPackageListing> advert, const VoLocation& definition,
                        const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                        const InstallationOptions& options = InstallationOptions());

    /// @{
    /// The first, long part of Install: fetches, builds and checks a release, and keeps it in the update directory
    /// until Commit puts it in place, by this process or a later one. Needs no rights at the installation directory and
    /// changes nothing there; other operations may go on meanwhile, and so may the application that is to be updated.
    ///
    /// Of each package one release is staged at most: the next one takes the place of the one before when it is whole.
    /// A staging that was interrupted goes on when it is called again, and one of the same release fetches nothing and
    /// takes over the newer proof.
    ///
    /// Failures are those of Install; "File already locked: " + folder when another process, or another thread, is
    /// staging the package.
    static StagedInstallation Stage(const VoLocation& definition, const VoDirectoryPath& installationDirectory,
                                    VoStopFlag stop, const InstallationOptions& options = InstallationOptions());
    static StagedInstallation Stage(VoUniquePtr<AdvertisedPackageListing> advert, const VoLocation& definition,
                                    const VoDirectoryPath& installationDirectory, VoStopFlag stop,
                                    const InstallationOptions& options = InstallationOptions());
    /// @}

    /// The second, short part: puts the staged release of a package in place as Install does, as a whole or not at all,
    /// with the options it was staged with, and records it. Nothing is fetched. It is decided anew whether the
    /// release may be installed. The result is false when it was in place already: an earlier call was killed after
    /// that.
    ///
    /// After a failure the release stays staged, and may be committed later: at the next start of the application
    /// (CommitPending) files may be replaced that are in use now.
    /// @throws VoInstallationFailedException as Install does. Its cause is a VoStagedReleaseException when nothing is
    /// staged ("No release is staged of package " + packageID), when another release is installed than when it was
    /// staged, or files are missing that were there then, or what is staged is damaged; a VoUntrustedReleaseException
    /// when a newer manifest was seen since or the one that vouched for it has expired
    /// @throws VoValidationException ("Invalid identifier: " + packageID)
    static bool Commit(const VoUUID& packageID, VoStopFlag stop);

    /// What is staged. A record that cannot be read is logged and left out.
    static VoDeque<StagedInstallation> Staged();
    /// Drops what is staged of a package, also of a staging that was interrupted; false when there is nothing.
    /// @throws VoFileException when it cannot be removed
    /// @throws VoInvalidCallException ("An installation is already running") from a receiver of messages
    /// @throws VoValidationException ("Invalid identifier: " + packageID)
    static bool DropStaged(const VoUUID& packageID);

    /// @{
    /// What Install would do, without doing it; see PackageInstaller::plan. The first form throws what reading the
    /// definition throws; the others serve definitions that have been read from anywhere, the last one without a copy.
    static InstallationPlan Plan(const VoFilePath& definitionFile, const VoDirectoryPath& installationDirectory,
                                 const InstallationOptions& options = InstallationOptions());
    static InstallationPlan Plan(const AdvertisedPackageListing& advert, const VoDirectoryPath& installationDirectory,
                                 const InstallationOptions& options = InstallationOptions());
    static InstallationPlan Plan(VoUniquePtr<AdvertisedPackageListing> advert,
                                 const VoDirectoryPath& installationDirectory,
                                 const InstallationOptions& options = InstallationOptions());
    /// @}

    /// @{
    /// Removes a package's files, the directories that installing it created where nothing else is in them, and its
    /// record. Files that the package did not bring stay, and so do the directories they lie in.
    ///
    /// For a package without listing only its entry in the registry is dropped, with a warning; one that is not
    /// installed at all only warns. A file that another package owns as well stays. A file or directory that cannot be
    /// deleted, or not even be looked at, does not stop the rest: it stays recorded, and the call ends with
    /// UninstallFailedMessage and the VoFileException. A listing that cannot be read throws what reading it throws, and
    /// nothing is removed.
    /// @throws VoFileLockedException when another process is installing
    /// @throws VoValidationException ("Invalid identifier: " + packageID)
    /// @throws VoUserCancelledException when the flag is raised: the same call goes on where it stopped
    static void Uninstall(const VoUUID& packageID);
    static void Uninstall(const VoUUID& packageID, VoStopFlag stop);
    /// @}

    /// The listing of an installed package.
    /// @throws VoFileNotFoundException when there is none
    /// @throws VoValidationException ("Invalid identifier: " + packageID), and what reading a damaged one throws
    static VoUniquePtr<InstalledPackageListing> Package(const VoUUID& packageID);
    /// Package ID and version of everything installed, in the order of first installation. As this process knows it:
    /// changes by other processes are seen after the next operation.
    static VoDeque<VoPair<VoUUID, VoVersion>> Packages();
    /// ID and display name of everything that an operation can be asked for: what is recorded, and what an operation
    /// that was interrupted has not recorded yet or not forgotten quite. The name is empty where nothing tells it.
    static VoDeque<VoPair<VoUUID, VoString>> Names();
    /// Whether an operation on the package was interrupted or could not be recorded wholly. The next one mends that.
    static bool IsUnfinished(const VoUUID& packageID);
    /// Where the listing of a package is kept.
    /// @throws VoValidationException ("Invalid identifier: " + packageID) for an ID that cannot be a file's name
    static VoFilePath InstalledPackageListingPath(const VoUUID& packageID);

    /// Checks every installed file of a package against its listing, and looks for files that do not belong to it
    /// or to another package below the directories that were created for it. Changes nothing and takes no lock; reports
    /// on files that an operation running at the same time is replacing are of no value. Progress and findings are also
    /// broadcast.
    /// @throws VoUserCancelledException when the flag is raised; and what Package throws
    static VerificationReport Verify(const VoUUID& packageID, VoStopFlag stop);

    /// Reinstalls the missing and changed files of an installed release from its definition, fetching only the chunks
    /// that these need. Returns what was found before; nothing is written when the package was intact.
    /// @throws VoInstallationFailedException as Install does, also when the package is not installed or the definition
    /// is that of another release than the installed one
    static VerificationReport Repair(const VoLocation& definition, VoStopFlag stop,
                                     const VoDownloadPolicy& downloads = VoDownloadPolicy());

    /// @{
    /// Asks, for one installed package or for each in turn, where it came from (PackageSources) for the newest release
    /// that is offered to this installation; TrustedReleases with the policy reads and verifies. Whatever goes wrong
    /// with one package is its failure text and does not keep the others from being asked. Changes nothing.
    /// @throws VoUserCancelledException when the flag is raised; and, for all packages, what Packages() throws
    static PackageUpdate UpdatesAvailable(const VoUUID& packageID, VoStopFlag stop = VoStopFlag(),
                                          const TrustPolicy& policy = TrustPolicy(),
                                          const VoDownloadPolicy& downloads = VoDownloadPolicy());
    static VoDeque<PackageUpdate> UpdatesAvailable(VoStopFlag stop = VoStopFlag(),
                                                   const TrustPolicy& policy = TrustPolicy(),
                                                   const VoDownloadPolicy& downloads = VoDownloadPolicy());
    /// @}
    /// As UpdatesAvailable() for all packages, on a thread of its own, where the callback is called once with what was
    /// found. The future becomes ready after that; its get() throws what the callback or UpdatesAvailable() threw, and
    /// its destruction waits: raise the flag before. The thread that owns the download service must not wait for it
    /// before it is ready, because that thread carries the downloads out.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] static std::future<void>
    UpdatesAvailableAsync(std::function<void(const VoDeque<PackageUpdate>&)> callback, VoStopFlag stop = VoStopFlag(),
                          const TrustPolicy& policy = TrustPolicy(),
                          const VoDownloadPolicy& downloads = VoDownloadPolicy());

    /// Installs the newest release of an installed package that is offered to this installation, from where the package
    /// came and into the directory that it is in, and records its place. The documents are read and verified anew: what
    /// is installed may be newer than what UpdatesAvailable() found. Installing what is installed already mends it.
    /// The options hold but for two: a release older than the installed one is always refused, and the proof is that of
    /// the release.
    /// @throws VoInvalidCallException "it is not recorded where the package was installed from"
    /// @throws VoValidationException "Not a declarations file: " + where it stands
    /// @throws VoInstallationFailedException as Install does; and what Package and TrustedReleases throw
    static void Update(const VoUUID& packageID, VoStopFlag stop, const TrustPolicy& policy = TrustPolicy(),
                       const InstallationOptions& options = InstallationOptions());

    /// @{ A registry object is only made by reading one; see the static operations.
    InstalledPackages();
    explicit InstalledPackages(VoXMLStreamElementLoader& element);
    InstalledPackages(const InstalledPackages& other);
    InstalledPackages& operator=(const InstalledPackages& other);
    ~InstalledPackages() override;
    /// @}

    Type objectType() const override;
    void writeElements(VoXMLElementWriter& element) const override;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater
