#pragma once

#include <Core/VoDeque.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackages.h>

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace vo::updater {
class ReleaseManifest;
}

namespace vo::updater::detail {

/// The declarations that stay when only the newest `keep` releases of each package do, and what goes as texts. Pure.
std::pair<AdvertisedPackages, VoDeque<VoString>> NewestOnly(const AdvertisedPackages& declared, std::size_t keep);

/// Finds the files of a folder of releases that nothing refers to. Only names that the library gives are looked at, and
/// links are not followed. What cannot be read ends the search: it might refer to anything.
class Clearance
{
public:
    explicit Clearance(const VoDirectoryPath& folder);

    /// Keeps what declarations, or a manifest, refer to.
    /// @{
    void keep(const AdvertisedPackages& declarations);
    void keep(const ReleaseManifest& manifest);
    /// @}
    /// Keeps what all declarations documents of the folder but `except` refer to.
    void keepOtherDeclarations(const VoFilePath& except);

    /// Tells the files, a definition before its chunks.
    void find(const std::function<void(const VoFilePath&)>& tell) const;
    /// Removes the folders of releases that are empty now.
    void removeEmptyFolders() const;

private:
    void forEachRelease(const std::function<void(const VoDirectoryPath&)>& visit) const;
    void findInRelease(const VoDirectoryPath& release, const std::function<void(const VoFilePath&)>& tell) const;
    std::set<std::string> chunksOf(const VoDirectoryPath& release) const;
    std::set<std::string> patchesOf(const VoDirectoryPath& release) const;
    void keepRelease(const VoFilePath& definition);
    bool isKept(const VoFilePath& file) const;

    const VoDirectoryPath m_folder;
    std::set<std::string> m_kept; // definitions, what stands beside them, and copies of both, relative, folded
};

} // namespace vo::updater::detail
