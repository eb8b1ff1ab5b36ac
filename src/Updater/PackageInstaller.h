#pragma once

#include <Updater/AbstractPackageInstaller.h>
#include <Updater/InstallationOptions.h>
#include <Updater/InstallationPlan.h>
#include <Updater/PackageDifferences.h>
#include <Updater/ReleasePatches.h>

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vo::updater {

namespace detail {
class FileOwners;
class InstallationJournal;
struct AttributePlan;
struct ExpectedFile;
struct FileClaims;
struct TargetFile;
enum class Durability;
using ReusedFiles = std::unordered_map<VoUUID, VoFilePath>;
using ChosenPatches = std::unordered_map<VoUUID, const ReleasePatches::Patch*>;
} // namespace detail

/// Installs a release over the one that is installed, if any, writing only the files that differ.
///
/// Files that differ are those that the two listings tell apart, and the unchanged ones that are missing on disk, have
/// another size, or were installed elsewhere; contents are read only of files that an interrupted run was replacing.
///
/// All new files are first built beside their places (path + ".vonew") and checked. Then each old file is renamed (path
/// + ".voold") and the new one renamed into its place; a failure takes all of that back. When the result is checked and
/// recorded, the old files are deleted, and with them files that the release no longer has and recorded directories
/// left empty. What the run does is noted on disk first: after a process was killed at any moment, the next operation
/// on any package makes of it the old release or the new one.
///
/// Files of other packages in the same folders are neither replaced nor removed.
class VOCORE_EXPORT PackageInstaller : public AbstractPackageInstaller
{
public:
    /// Compares the advert with the installed release that the registry has a listing of; a listing that cannot be read
    /// counts as none, with a warning. Files that may be copied, where the options allow that, are read here.
    /// @throws VoNullPointerException for an empty pointer
    PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package, const VoDirectoryPath& installationDirectory,
                     const InstallationOptions& options = InstallationOptions());
    ~PackageInstaller() override;

    /// What differs from the installed release, in the order in which it is worked through.
    const PackageDifferences& differences() const;

    /// What run() would do. Reads the staged chunks to tell which of them need not be fetched again, and changes
    /// nothing.
    /// @throws VoValidationException for an advert that is unsafe or unsound, as run() would refuse it
    InstallationPlan plan() const;

    VoUniquePtr<InstalledPackageListing> install(VoStopFlag stop) override;
    /// The chunks of all added and modified files, also of those that will be copied from installed files.
    VoDeque<ChunkListing> requiredChunks() const override;

protected:
    /// For a caller that knows what is installed (null: nothing) and how the run differs from the usual one.
    PackageInstaller(VoUniquePtr<AdvertisedPackageListing> package, const VoDirectoryPath& installationDirectory,
                     VoUniquePtr<InstalledPackageListing> installed, const detail::InstallerSettings& settings);

    /// The part of a run that needs no rights at the places of the files and changes nothing there: fetches what is
    /// missing, and builds and checks the files to write in the folder that the settings name. Those that an earlier
    /// call left there whole are kept. Throws what goes wrong, unwrapped.
    void stage(const VoLocation& definition, const VoStopFlag& stop);
    /// The files that a commit takes from there, each once. After stage().
    VoDeque<VoFilePath> stagedFiles() const;

private:
    struct PlannedFile;
    using PlannedFiles = std::vector<const PlannedFile*>;

    void compare(VoUniquePtr<InstalledPackageListing>&& installed); // as it was after a failure
    detail::ReusedFiles findReusable(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                     const detail::AttributePlan& attributes) const;
    detail::ReusedFiles rebuildWronglyMarked(const detail::AttributePlan& attributes, PackageDifferences& differences,
                                             detail::FileClaims& claims) const;
    bool isUsable() const;
    void addFilesNotInPlace(const InstalledPackageListing& installed, PackageDifferences& differences) const;
    detail::FileClaims findClaims(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                  detail::FileOwners& owners) const;
    detail::ReusedFiles findStaged(const PackageDifferences& differences) const;
    void prepare() override;
    VoDeque<ChunkListing> chunksToObtain() const override;
    bool prepareStaged(const VoStopFlag& stop) override;
    bool findOtherWay() override;
    detail::ChosenPatches choosePatches(const PackageDifferences& differences, const InstalledPackageListing* installed,
                                        const std::unordered_set<VoUUID>& refused) const;
    void planAgain();
    void planCopies(std::vector<PlannedFile>& files, InstallationPlan& totals, const detail::ReusedFiles& reused,
                    const detail::ChosenPatches& patches) const;
    VoUUID idOf(const PlannedFile& planned) const;
    InstallationPlan::File shown(const PlannedFile& planned) const;
    void applyPatch(PlannedFile& planned, const VoStopFlag& stop) const;
    void requirePermitted() const;
    bool isMove() const;
    bool isInPlace(const InstalledFileListing& record, const AdvertisedFileListing& file) const;
    detail::InstallationJournal journal() const;
    VoDeque<detail::TargetFile> targets() const;
    VoFilePath buildPlace(const AdvertisedFileListing& file) const;
    void requireAllStaged() const;
    std::uint64_t bytesToStage() const;
    bool isStaged(const PlannedFile& planned) const;
    void buildFiles(const VoStopFlag& stop);
    void buildFile(const PlannedFile& planned, detail::Durability durability, const VoStopFlag& stop);
    void compareBuilt(const VoStopFlag& stop);
    void markBuilt(const AdvertisedFileListing& file);
    void buildLinks(detail::Durability durability, const VoStopFlag& stop);
    void copyFile(const detail::ExpectedFile& file, const VoFilePath& source, detail::Durability durability,
                  const VoStopFlag& stop);
    std::vector<VoUUID> chunkOrder(const PlannedFiles& order) const;
    const AdvertisedFileListing* builtFile(const PlannedFile& planned) const;
    PlannedFiles buildOrder(std::uint64_t cacheLimit) const;
    std::vector<std::size_t> filesToVerify();
    void verify(const VoStopFlag& stop);

    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater
