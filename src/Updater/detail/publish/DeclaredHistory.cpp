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
#include <Updater/PackingOrder.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/TargetIndex.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/SeenFiles.h>

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

bool HasSize(const SourceFile& file, std::int64_t size)
{
    if (size < 0 || !(file.stamp || IsRegularFile(file.source)))
        return false;
    const std::uint64_t found = file.stamp ? file.stamp->size : VoFileSystem::FileSize(file.source);
    return found == static_cast<std::uint64_t>(size);
}

// Which files are as the newest release has them. Those of another size have changed; of the others those are read that
// are not surely as they were when that release was published.
class Contents
{
public:
    Contents(const std::vector<SourceFile>& files, const AdvertisedPackageListing& newest, const TargetIndex& byTarget)
        : m_files(files)
        , m_newest(newest)
    {
        const FileTable& earlier = TableOf(newest.files());
        for (const SourceFile& file : files) {
            const FileTable::Number number = byTarget.find(earlier, file.target);
            const bool mayBe = number != FileTable::None && HasSize(file, earlier.length(number));
            m_numbers.push_back(mayBe ? number : FileTable::None);
        }
    }

    // A file that cannot be read counts as changed: adding it will tell what is wrong with it.
    void compare(const SeenFiles& seen, const std::function<void(const VoFilePath&)>& reading)
    {
        std::vector<std::size_t> doubtful;
        for (std::size_t i = 0; i < m_numbers.size(); ++i) {
            if (m_numbers[i] != FileTable::None && !seen.isUnchanged(m_numbers[i], m_files[i].stamp))
                doubtful.push_back(i);
        }
        const auto expected = [&](std::size_t i) {
            const SourceFile& file = m_files[doubtful[i]];
            reading(file.target);
            return Expected(file.source, m_newest.files()[m_numbers[doubtful[i]]]);
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

    VoDeque<PackingOrder::File> files() const
    {
        VoDeque<PackingOrder::File> result;
        for (std::size_t i = 0; i < m_numbers.size(); ++i) {
            result.pushBack({m_files[i].target, VoChecksum(), 0});
            if (m_numbers[i] == FileTable::None)
                continue;
            const ListedFile earlier(m_newest.files()[m_numbers[i]]);
            result.back().checksum = earlier.checksum();
            result.back().size = static_cast<std::uint64_t>(earlier.length());
        }
        return result;
    }

private:
    const std::vector<SourceFile>& m_files;
    const AdvertisedPackageListing& m_newest;
    std::vector<FileTable::Number> m_numbers; // of the same files in the newest release; None: new or changed
};

// Whatever is wrong with the earlier release costs time only: its files are packed anew.
KeptChunks TryKeep(VoUniquePtr<AdvertisedPackageListing> newest, TargetIndex byTarget, const VoFilePath& definition,
                   const std::vector<bool>& unchanged, std::uint64_t capacity, const Warn& warn)
{
    try {
        return KeptChunks(std::move(newest), std::move(byTarget), definition.parent(), unchanged, capacity);
    } catch (const VoException&) {
        warn("Chunks of the earlier release are not used: " + definition.path() + ": " + vo::CurrentExceptionText());
        return {};
    }
}

// The files of one age stay in their order.
std::vector<std::vector<SourceFile>> Arranged(std::vector<SourceFile> files, const std::vector<std::size_t>& ages)
{
    std::map<std::size_t, std::vector<SourceFile>> byAge;
    byAge[0]; // also when nothing is new or changed
    for (std::size_t i = 0; i < files.size(); ++i)
        byAge[ages[i]].push_back(std::move(files[i]));
    std::vector<std::vector<SourceFile>> result;
    result.reserve(byAge.size());
    for (auto& [age, filesOfAge] : byAge)
        result.push_back(std::move(filesOfAge));
    return result;
}

} // namespace

std::vector<VoFilePath> DefinitionsOf(const AdvertisedPackages& declared, const VoUUID& packageID,
                                      const VoFilePath& declarationsFile)
{
    std::vector<const AdvertisedPackages::Declaration*> releases;
    for (const AdvertisedPackages::Declaration& declaration : declared.declarations()) {
        if (declaration.packageID() == packageID)
            releases.push_back(&declaration);
    }
    std::stable_sort(releases.begin(), releases.end(),
                     [](const auto* a, const auto* b) { return a->version() > b->version(); });
    std::vector<VoFilePath> definitions;
    definitions.reserve(releases.size());
    for (const AdvertisedPackages::Declaration* release : releases)
        definitions.push_back(release->definition(declarationsFile).file());
    return definitions;
}

AgedSources SortedByAge(std::vector<SourceFile> files, const VoUUID& packageID, const VoFilePath& declarationsFile,
                        std::uint64_t capacity, const std::function<void(const VoFilePath&)>& reading, const Warn& warn)
{
    const bool isFirst = !VoFileSystem::Exists(declarationsFile);
    const std::vector<VoFilePath> definitions =
        isFirst ? std::vector<VoFilePath>()
                : DefinitionsOf(*AdvertisedPackages::Open(declarationsFile), packageID, declarationsFile);
    VoUniquePtr<AdvertisedPackageListing> newest =
        definitions.empty() ? VoUniquePtr<AdvertisedPackageListing>() : TryOpen(definitions.front(), warn);
    if (!newest)
        return {{std::move(files)}, {}};

    TargetIndex byTarget(TableOf(newest->files()));
    Contents contents(files, *newest, byTarget);
    const VoFilePath seen = declarationsFile.parent().file(SeenFiles::PublishedName);
    contents.compare(SeenFiles::At(seen, definitions.front()), reading);
    PackingOrder order(contents.files());
    order.addEarlier(*newest);
    for (std::size_t i = 1; i < definitions.size() && !order.isDecided(); ++i) {
        if (const VoUniquePtr<AdvertisedPackageListing> earlier = TryOpen(definitions[i], warn))
            order.addEarlier(*earlier);
    }
    const std::vector<bool> unchanged = contents.unchanged();
    KeptChunks kept;
    if (capacity > 0)
        kept = TryKeep(std::move(newest), std::move(byTarget), definitions.front(), unchanged, capacity, warn);
    return {Arranged(std::move(files), order.ages()), std::move(kept)};
}

} // namespace vo::updater::detail
