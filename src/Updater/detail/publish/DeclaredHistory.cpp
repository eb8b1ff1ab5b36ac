#include <Updater/detail/publish/DeclaredHistory.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/publish/FileAges.h>

#include <algorithm>
#include <map>
#include <utility>

namespace vo::updater::detail {

namespace {

using Warn = std::function<void(const VoString&)>;

VoUniquePtr<AdvertisedPackageListing> TryOpen(const VoFilePath& definition, const Warn& warn)
{
    try {
        return AdvertisedPackageListing::Open(definition);
    } catch (...) {
        warn("Earlier release left out of the packing order: " + definition.path() + ": " + vo::CurrentExceptionText());
        return {};
    }
}

std::shared_ptr<const IndexedRelease> TryIndexing(const VoFilePath& definition, const Warn& warn)
{
    const auto release = TryOpen(definition, warn);
    return release ? std::make_shared<const IndexedRelease>(std::move(*release)) : nullptr;
}

bool HasSize(const SourceFiles& files, SourceFiles::Number number, std::int64_t size)
{
    const auto& stamp = files.stamp(number);
    if (size < 0 || !(stamp || IsRegularFile(files.source(number))))
        return false;
    const std::uint64_t found = stamp ? stamp->size : VoFileSystem::FileSize(files.source(number));
    return found == static_cast<std::uint64_t>(size);
}

// Which files are as the newest release has them. Those of another size have changed; of the others those are read that
// are not surely as they were when that release was published.
class Contents
{
public:
    Contents(const SourceFiles& files, const IndexedRelease& newest)
        : m_files(files)
        , m_newest(newest)
    {
        m_numbers.reserve(files.size());
        for (SourceFiles::Number file = 0; file < files.size(); ++file) {
            const FileTable::Number number = newest.find(files.target(file));
            const bool mayBe = number != FileTable::None && HasSize(files, file, newest.files().length(number));
            m_numbers.push_back(mayBe ? number : FileTable::None);
        }
    }

    // A file that cannot be read counts as changed: adding it will tell what is wrong with it.
    void compare(const SeenFiles& seen, const std::function<void(const VoFilePath&)>& reading)
    {
        std::vector<SourceFiles::Number> doubtful;
        for (SourceFiles::Number i = 0; i < m_numbers.size(); ++i) {
            if (m_numbers[i] != FileTable::None && !seen.isUnchanged(m_numbers[i], m_files.stamp(i)))
                doubtful.push_back(i);
        }
        const auto expected = [&](std::size_t i) {
            reading(m_files.target(doubtful[i]));
            return Expected(m_files.source(doubtful[i]), m_newest.listing().files()[m_numbers[doubtful[i]]]);
        };
        ExamineAll(doubtful.size(), expected, Links::Followed, VoStopFlag(), [&](std::size_t i, FileState state) {
            if (state != FileState::Sound)
                m_numbers[doubtful[i]] = FileTable::None;
        });
    }

    // Of each file of the newest release.
    std::vector<bool> unchanged() const
    {
        std::vector<bool> result(m_newest.files().size());
        for (const FileTable::Number number : m_numbers) {
            if (number != FileTable::None)
                result[number] = true;
        }
        return result;
    }

    // Of the files in the newest release; None for what is new or changed.
    const std::vector<FileTable::Number>& numbers() const { return m_numbers; }

private:
    const SourceFiles& m_files;
    const IndexedRelease& m_newest;
    std::vector<FileTable::Number> m_numbers;
};

// Whatever is wrong with the earlier release costs time only: its files are packed anew.
KeptChunks TryKeep(std::shared_ptr<const IndexedRelease> newest, const VoFilePath& definition,
                   const std::vector<bool>& unchanged, std::uint64_t capacity, const Warn& warn)
{
    try {
        return KeptChunks(std::move(newest), definition.parent(), unchanged, capacity);
    } catch (const VoException&) {
        warn("Chunks of the earlier release are not used: " + definition.path() + ": " + vo::CurrentExceptionText());
        return {};
    }
}

// The files of one age stay in their order.
std::vector<std::vector<SourceFiles::Number>> Arranged(const std::vector<std::size_t>& ages)
{
    std::map<std::size_t, std::vector<SourceFiles::Number>> byAge;
    byAge[0]; // also when nothing is new or changed
    for (std::size_t i = 0; i < ages.size(); ++i)
        byAge[ages[i]].push_back(static_cast<SourceFiles::Number>(i));
    std::vector<std::vector<SourceFiles::Number>> result;
    result.reserve(byAge.size());
    for (auto& [age, filesOfAge] : byAge)
        result.push_back(std::move(filesOfAge));
    return result;
}

// The releases of a package, the newest first.
std::vector<const AdvertisedPackages::Declaration*> ReleasesOf(const AdvertisedPackages& declared,
                                                               const VoUUID& packageID)
{
    std::vector<const AdvertisedPackages::Declaration*> releases;
    for (const AdvertisedPackages::Declaration& declaration : declared.declarations()) {
        if (declaration.packageID() == packageID)
            releases.push_back(&declaration);
    }
    std::stable_sort(releases.begin(), releases.end(),
                     [](const auto* a, const auto* b) { return a->version() > b->version(); });
    return releases;
}

} // namespace

std::vector<VoFilePath> DefinitionsOf(const AdvertisedPackages& declared, const VoUUID& packageID,
                                      const VoFilePath& declarationsFile)
{
    std::vector<VoFilePath> definitions;
    for (const AdvertisedPackages::Declaration* release : ReleasesOf(declared, packageID))
        definitions.push_back(release->definition(declarationsFile).file());
    return definitions;
}

AgedSources SortedByAge(const SourceFiles& files, const VoUUID& packageID, const VoFilePath& declarationsFile,
                        const std::shared_ptr<const IndexedRelease>& base, std::uint64_t capacity,
                        const std::function<void(const VoFilePath&)>& reading, const Warn& warn)
{
    const auto declared = VoFileSystem::Exists(declarationsFile) ? AdvertisedPackages::Open(declarationsFile)
                                                                 : VoUniquePtr<AdvertisedPackages>::Make();
    const auto releases = ReleasesOf(*declared, packageID);
    const std::vector<VoFilePath> definitions = DefinitionsOf(*declared, packageID, declarationsFile);
    std::shared_ptr<const IndexedRelease> newest;
    // Each build of a release has a version ID of its own.
    if (base && !releases.empty() && base->listing().versionID() == releases.front()->versionID())
        newest = base;
    else if (!releases.empty())
        newest = TryIndexing(definitions.front(), warn);
    if (!newest)
        return {Arranged(std::vector<std::size_t>(files.size())), {}};

    Contents contents(files, *newest);
    const VoFilePath seen = declarationsFile.parent().file(SeenFiles::PublishedName);
    contents.compare(SeenFiles::At(seen, definitions.front()), reading);
    FileAges ages(newest->files(), contents.numbers());
    for (std::size_t i = 1; i < definitions.size() && !ages.isDecided(); ++i) {
        if (const VoUniquePtr<AdvertisedPackageListing> earlier = TryOpen(definitions[i], warn))
            ages.addEarlier(TableOf(earlier->files()));
    }
    KeptChunks kept;
    if (capacity > 0)
        kept = TryKeep(newest, definitions.front(), contents.unchanged(), capacity, warn);
    return {Arranged(ages.ages()), std::move(kept)};
}

} // namespace vo::updater::detail
