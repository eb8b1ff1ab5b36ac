#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUniquePtr.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoReceiver.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/UpdateMessages.h>

#include <functional>
#include <memory>

struct VoDownloadPolicy;

namespace vo::updater {

namespace detail {
class ChunkSource;
class EventReport;
struct InstallerSettings;
} // namespace detail

/// Brings one release of a package onto the disk: obtains the chunks it needs into a staging directory, has a subclass
/// rebuild the files, and cleans up.
///
/// An installer makes one run, on the calling thread, and is not guarded; only connecting to its messages is. It checks
/// the whole advert before it fetches or writes anything. The format carries no signatures: that the right bytes are
/// installed rests on how the advert was obtained and on the checksums in it.
///
/// To install and have it recorded, use InstalledPackages::Install.
class VOCORE_EXPORT AbstractPackageInstaller
{
public:
    virtual ~AbstractPackageInstaller();
    AbstractPackageInstaller(const AbstractPackageInstaller&) = delete;
    AbstractPackageInstaller& operator=(const AbstractPackageInstaller&) = delete;

    /// Writes the release from its staged chunks; the middle part of run(). Throws what goes wrong, unwrapped.
    virtual VoUniquePtr<InstalledPackageListing> install(VoStopFlag stop) = 0;
    /// The chunks to obtain, each once, in the order of the advert.
    virtual VoDeque<ChunkListing> requiredChunks() const = 0;
    /// Where a file of the advert is installed: its target in the installation directory. Throws what the path classes
    /// throw for a target that climbs out of its base; run() refuses such an advert as a whole.
    virtual VoFilePath resolvedPath(const AdvertisedFileListing& file) const;

    /// @{
    /// Installs from a server (chunk paths are relative to the advert's URL) or from a local release directory (they
    /// are relative to the definition file's directory). Chunks that an interrupted run staged are used again when
    /// their size and checksum fit.
    ///
    /// Returns the record of what is installed; writing it anywhere is the caller's part. A failed check of the
    /// installed files afterwards is announced by messages only. Every failure throws VoInstallationFailedException
    /// with "Installation failed: " and the cause's text ("Installation failed" when it has none); a raised stop flag
    /// is the failure "User cancelled".
    ///
    /// From a URL is fetched as `downloads` says; without it every chunk is tried once. With retries or mirrors a
    /// chunk that arrives with other bytes than advertised is fetched again, from another place where there is one.
    ///
    /// Every file is built and checked beside its place before the first one is put in place, so a failure up to then
    /// leaves the installed files, and the directory tree, as they were. Call it once.
    VoUniquePtr<InstalledPackageListing> run(const VoUrl& advertUrl, VoStopFlag stop);
    VoUniquePtr<InstalledPackageListing> run(const VoFilePath& definitionFile, VoStopFlag stop);
    VoUniquePtr<InstalledPackageListing> run(const VoLocation& definition, VoStopFlag stop,
                                             const VoDownloadPolicy& downloads);
    /// @}

    /// Receives the messages, on the installing thread; progress of a download comes on the download service's thread.
    /// What a callback throws is logged and ignored.
    [[nodiscard]] VoReceiver connect(std::function<void(const VoSharedPtr<AbstractMessage>&)> callback);

    const VoDirectoryPath& installationDirectory() const; ///< Where the targets are installed.

protected:
    /// Takes over the advert.
    /// @throws VoNullPointerException for an empty pointer
    AbstractPackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                             const VoDirectoryPath& installationDirectory);
    /// As above, for a run that differs from the usual one.
    AbstractPackageInstaller(VoUniquePtr<AdvertisedPackageListing> package,
                             const VoDirectoryPath& installationDirectory, const detail::InstallerSettings& settings);
    /// Copies the advert.
    AbstractPackageInstaller(const AdvertisedPackageListing& package, const VoDirectoryPath& installationDirectory);

    /// What is done before anything is obtained, when the advert has passed its checks; nothing here.
    virtual void prepare();
    /// Those of the required chunks that have to be obtained: all of them here.
    virtual VoDeque<ChunkListing> chunksToObtain() const;
    /// Called when all of these are staged, to work on them before the first file is written. False when more of them
    /// are needed now; then they are obtained, and this is called again. Nothing here.
    virtual bool prepareStaged(const VoStopFlag& stop);
    /// Called when they cannot be obtained: whether others would do, which are tried then. None here.
    virtual bool findOtherWay();

    const AdvertisedPackageListing& advertisedPackage() const; ///< The release to install.
    const VoUUID& packageID() const;                           ///< advertisedPackage().packageID()
    const VoUUID& versionID() const;                           ///< advertisedPackage().versionID()

    /// Sends a message to the receivers. What they throw is logged and ignored.
    void broadcast(const VoSharedPtr<AbstractMessage>& message);

    /// The uncompressed bytes of the chunk that holds a piece, read from the staging directory and cached. The
    /// reference is good until the next call.
    /// @throws VoNullPointerException with "Failed to find required chunk" for a chunk that is not staged or not in the
    /// advert
    /// @throws VoInvalidConversionException for one that cannot be uncompressed to the size it promises
    const VoByteArray& chunk(const ChunkReferenceListing& reference);

    /// Installs one file completely and adds it, and the directories made for it, to `listing`: builds it beside its
    /// place, checks size and checksum, and renames it over what was there.
    /// @throws VoValidationException with "File checksum does not match for: " + path when the bytes are not the
    /// advertised ones, and then leaves an older file as it was
    void installFile(const AdvertisedFileListing& file, InstalledPackageListing& listing);

    /// Brings the chunks that are missing into the staging directory and has prepareStaged() work on them; the first
    /// part of run(). Throws what goes wrong, unwrapped, after logging it.
    void obtainPrepared(const VoLocation& definition, const VoStopFlag& stop, const VoDownloadPolicy& downloads);

    /// Deletes the staged chunks and the staging directory. Failures are logged, never thrown.
    void cleanStagingDirectory();

    /// @{ Logs the text, followed by the package and version IDs, in the category "updater".
    void diagnostic(const VoString& text) const;
    void warning(const VoString& text) const;
    void error(const VoString& text) const;
    /// @}

    /// Throws what run() throws for an advert that is unsafe or unsound, unwrapped.
    void requireValid() const;
    /// Logs that a file was put in its place.
    void logInstalled(const AdvertisedFileListing& file, const VoFilePath& place) const;
    const detail::InstallerSettings& settings() const; ///< How this run differs from the usual one.
    const detail::EventReport& events() const;         ///< Where the events of the run are told.
    detail::ChunkSource& chunkSource() const;          ///< The chunks of the release.

private:
    void obtain(const VoLocation& definition, const VoStopFlag& stop, const VoDownloadPolicy& downloads);
    VoDeque<ChunkListing> chunksToFetch(const VoStopFlag& stop) const;
    void download(const VoUrl& advertUrl, const VoStopFlag& stop, const VoDownloadPolicy& downloads);
    void reportDamaged(const VoDeque<ChunkListing>& chunks, const VoUrl& advertUrl, std::size_t attempt,
                       const VoDownloadPolicy& downloads) const;
    void fetch(const VoDeque<ChunkListing>& chunks, const VoUrl& advertUrl, const VoStopFlag& stop,
               const VoDownloadPolicy& downloads);
    void obtainChunks(const VoFilePath& definitionFile, const VoStopFlag& stop);
    static void ensureDirectoryExists(const VoDirectoryPath& directory, InstalledPackageListing& listing);

    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater
