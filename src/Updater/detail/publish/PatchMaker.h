#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/ReleasePatches.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace vo::updater::detail {

/// Makes the patches of a release for those who have earlier ones: for each file that an earlier release has with
/// another content, where the patch comes to at most 0.7 of the file's share of its chunks.
class VOCORE_PRIVATE_EXPORT PatchMaker
{
public:
    /// Tells of a file before its patch is made; may end the work by throwing.
    using Working = std::function<void(const VoFilePath& target)>;
    using Warn = std::function<void(const VoString&)>;

    /// For `package`, whose files are the `sources` of their targets. Patches and what is needed meanwhile go to
    /// `directory`, where patches are named as ReleasePatches has it.
    PatchMaker(const AdvertisedPackageListing& package, const std::map<VoFilePath, VoFilePath>& sources,
               const VoDirectoryPath& directory, Working working, Warn warn);

    /// Adds the patches that lead from another release, whose definition is that file. A file that cannot be had is
    /// left out, with a warning. A patch is kept only when it has been seen to make the new content. Works on all
    /// processors, and takes about 400 MB of memory at most; both callbacks are called on this thread.
    void addFrom(const VoFilePath& definition);

    const ReleasePatches& patches() const { return m_patches; } ///< Those made so far.
    VoFilePath path(const ReleasePatches::Patch& patch) const;  ///< The file of one.

private:
    class OldChunks;
    struct Job;

    std::vector<Job> jobsOf(const AdvertisedPackageListing& release) const;
    void take(const Job& job);
    bool isKnown(const AdvertisedFileListing& before, const AdvertisedFileListing& after) const;
    std::uint64_t compressedSize(const AdvertisedFileListing& file) const;
    void run(Job& job, const AdvertisedPackageListing& release, OldChunks& chunks,
             const std::function<void()>& between) const;
    static void rebuild(const AdvertisedPackageListing& release, OldChunks& chunks, const AdvertisedFileListing& file,
                        const VoFilePath& to);
    std::optional<ReleasePatches::Patch> make(const VoUUID& id, const Job& job, const VoFilePath& old,
                                              const std::function<void()>& between) const;

    const AdvertisedPackageListing& m_package;
    const std::map<VoFilePath, VoFilePath>& m_sources;
    const VoDirectoryPath m_directory;
    const Working m_working;
    const Warn m_warn;
    std::unordered_map<VoUUID, std::uint64_t> m_extents;              // what the chunks of the package hold
    std::unordered_multimap<VoUUID, ReleasePatches::Content> m_known; // what patches take, by the IDs of the files
    ReleasePatches m_patches;
};

} // namespace vo::updater::detail
