#include <Updater/detail/install/FileReuse.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileCheck.h>

#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

namespace vo::updater::detail {

namespace {

// Paths without regard to case: on some disks two spellings are one file.
std::string Key(const VoString& path)
{
    return std::string(Bytes(FoldedName(path)));
}

// The directories above a path, each without its last separator.
template <typename Visit>
void ForEachAbove(const std::string& key, Visit visit)
{
    for (std::size_t end = key.rfind('\\'); end != std::string::npos && end > 0; end = key.rfind('\\', end - 1))
        visit(key.substr(0, end));
}

// The places of the new release and the directories that they lie in.
class NewTree
{
public:
    void add(const VoFilePath& place)
    {
        const std::string key = Key(place.path());
        m_places.insert(key);
        ForEachAbove(key, [this](std::string directory) { m_directories.insert(std::move(directory)); });
    }

    // Whether the way is cleared of an installed file before the new files are built.
    bool displaces(const VoFilePath& installed) const
    {
        const std::string key = Key(installed.path());
        bool isBelowPlace = false;
        ForEachAbove(
            key, [&](const std::string& directory) { isBelowPlace = isBelowPlace || m_places.count(directory) > 0; });
        return isBelowPlace || m_directories.count(key) > 0;
    }

private:
    std::unordered_set<std::string> m_places;
    std::unordered_set<std::string> m_directories;
};

bool IsStillThere(const InstalledFileListing& file)
{
    try {
        return HasSize(Expected(file.path(), file), Links::Kept);
    } catch (const VoException&) {
        return false;
    }
}

} // namespace

ReusedFiles FindReusableFiles(const PackageDifferences& differences, const InstalledPackageListing& installed,
                              const AdvertisedPackageListing& advertised,
                              const std::function<VoFilePath(const AdvertisedFileListing&)>& placeOf,
                              const std::vector<VoFilePath>& otherPlaces)
{
    std::unordered_multimap<VoChecksum, const AdvertisedFileListing*> wanted;
    for (const FileDifference& difference : differences.fileDifferences()) {
        const bool isAdded = difference.type() == FileDifference::Added;
        const AdvertisedFileListing* file = isAdded ? advertised.file(difference.fileID()) : nullptr;
        if (file && ListedFile(*file).pieces().size() > 0)
            wanted.emplace(file->checksum(), file);
    }
    if (wanted.empty())
        return {};

    NewTree tree;
    for (const AdvertisedFileListing& file : advertised.files())
        tree.add(placeOf(file));
    for (const VoFilePath& place : otherPlaces)
        tree.add(place);
    Containment inside(installed.installationDirectory());
    std::vector<const InstalledFileListing*> candidates; // that may have the bytes of some added ones
    for (const InstalledFileListing& file : installed.files()) {
        const auto match = wanted.find(file.checksum());
        if (match != wanted.end() && match->second->size() == file.size() && inside.holds(file.path()) &&
            !tree.displaces(file.path()) && IsStillThere(file))
            candidates.push_back(&file);
    }

    ReusedFiles reused;
    const auto expected = [&](std::size_t i) { return Expected(candidates[i]->path(), *candidates[i]); };
    ExamineAll(candidates.size(), expected, Links::Kept, VoStopFlag(), [&](std::size_t i, FileState state) {
        const InstalledFileListing& file = *candidates[i];
        const auto [first, last] = wanted.equal_range(file.checksum());
        for (auto added = first; state == FileState::Sound && added != last; ++added) {
            if (added->second->size() == file.size())
                reused.emplace(added->second->id(), file.path());
        }
    });
    return reused;
}

} // namespace vo::updater::detail
