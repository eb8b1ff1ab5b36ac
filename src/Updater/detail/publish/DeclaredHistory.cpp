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
#include <Updater/detail/files/FileCheck.h>

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

// Files of another size than before have changed; the others are read to see.
class Contents
{
public:
    explicit Contents(const std::vector<SourceFile>& files)
    {
        for (const SourceFile& file : files)
            m_files.push_back({file, {file.target, VoChecksum(), 0}});
    }

    // A file that cannot be read counts as changed: adding it will tell what is wrong with it.
    void compare(const AdvertisedPackageListing& newest, const std::function<void(const VoFilePath&)>& reading)
    {
        const std::vector<Pair> doubtful = pairsOfSameSize(newest);
        const auto expected = [&](std::size_t i) {
            reading(doubtful[i].entry->source.target);
            return Expected(doubtful[i].entry->source.source, *doubtful[i].earlier);
        };
        ExamineAll(doubtful.size(), expected, Links::Followed, VoStopFlag(), [&](std::size_t i, FileState state) {
            if (state != FileState::Sound)
                return;
            doubtful[i].entry->file.checksum = doubtful[i].earlier->checksum();
            m_unchanged.emplace(doubtful[i].entry->file.target, doubtful[i].earlier);
        });
    }

    // Those of the release that was compared with.
    const KeptChunks::UnchangedFiles& unchanged() const { return m_unchanged; }

    VoDeque<PackingOrder::File> files() const
    {
        VoDeque<PackingOrder::File> result;
        for (const Entry& entry : m_files)
            result.pushBack(entry.file);
        return result;
    }

private:
    struct Entry
    {
        SourceFile source;
        PackingOrder::File file;
    };

    struct Pair
    {
        Entry* entry;
        const AdvertisedFileListing* earlier;
    };

    std::vector<Pair> pairsOfSameSize(const AdvertisedPackageListing& newest)
    {
        std::map<VoFilePath, const AdvertisedFileListing*> earlier;
        for (const AdvertisedFileListing& file : newest.files())
            earlier.emplace(file.target(), &file);
        std::vector<Pair> result;
        for (Entry& entry : m_files) {
            const auto known = earlier.find(entry.file.target);
            if (known == earlier.end() || !IsRegularFile(entry.source.source))
                continue;
            entry.file.size = VoFileSystem::FileSize(entry.source.source);
            if (static_cast<std::uint64_t>(known->second->size().bytes()) == entry.file.size)
                result.push_back({&entry, known->second});
        }
        return result;
    }

    std::vector<Entry> m_files;
    KeptChunks::UnchangedFiles m_unchanged;
};

// Whatever is wrong with the earlier release costs time only: its files are packed anew.
KeptChunks TryKeep(const AdvertisedPackageListing& newest, const VoFilePath& definition, const Contents& contents,
                   std::uint64_t capacity, const Warn& warn)
{
    try {
        return KeptChunks(newest, definition.parent(), contents.unchanged(), capacity);
    } catch (const VoException&) {
        warn("Chunks of the earlier release are not used: " + definition.path() + ": " + vo::CurrentExceptionText());
        return {};
    }
}

std::vector<std::vector<SourceFile>> Arranged(std::vector<SourceFile> files, const PackingOrder& order)
{
    std::map<std::string, SourceFile*> byTarget;
    for (SourceFile& file : files)
        byTarget.emplace(file.target.path().toStdString(), &file);
    std::vector<std::vector<SourceFile>> result;
    for (const VoDeque<VoFilePath>& age : order.targetsByAge()) {
        result.emplace_back();
        for (const VoFilePath& target : age)
            result.back().push_back(std::move(*byTarget.at(target.path().toStdString())));
    }
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
    const VoUniquePtr<AdvertisedPackageListing> newest =
        definitions.empty() ? VoUniquePtr<AdvertisedPackageListing>() : TryOpen(definitions.front(), warn);
    if (!newest)
        return {{std::move(files)}, {}};

    Contents contents(files);
    contents.compare(*newest, reading);
    PackingOrder order(contents.files());
    order.addEarlier(*newest);
    for (std::size_t i = 1; i < definitions.size() && !order.isDecided(); ++i) {
        if (const VoUniquePtr<AdvertisedPackageListing> earlier = TryOpen(definitions[i], warn))
            order.addEarlier(*earlier);
    }
    KeptChunks kept;
    if (capacity > 0)
        kept = TryKeep(*newest, definitions.front(), contents, capacity, warn);
    return {Arranged(std::move(files), order), std::move(kept)};
}

} // namespace vo::updater::detail
