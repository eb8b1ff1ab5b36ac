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
#include <Threading/VoParallelTaskScheduler.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/PackingOrder.h>

#include <algorithm>
#include <map>
#include <utility>

namespace vo::updater::detail {

namespace {

using Warn = std::function<void(const VoString&)>;

// The definitions of a package's releases, the newest first; of equal versions the first declared, which is the one
// that further releases are based on.
std::vector<VoFilePath> Definitions(const AdvertisedPackages& declared, const VoUUID& packageID,
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

VoUniquePtr<AdvertisedPackageListing> TryOpen(const VoFilePath& definition, const Warn& warn)
{
    try {
        return AdvertisedPackageListing::Open(definition);
    } catch (...) {
        warn("Earlier release left out of the packing order: " + definition.path() + ": " + vo::CurrentExceptionText());
        return {};
    }
}

// Files of another size than before have changed; the others are read to see. One that cannot be read counts as
// changed: adding it will tell what is wrong with it.
class Contents
{
public:
    explicit Contents(const std::vector<SourceFile>& files)
    {
        for (const SourceFile& file : files)
            m_files.push_back({file, {file.target, VoChecksum(), 0}});
    }

    void compare(const AdvertisedPackageListing& newest, const std::function<void(const VoFilePath&)>& reading)
    {
        const std::vector<Entry*> doubtful = entriesOfSameSize(newest);
        background_task::VoParallelTaskScheduler scheduler;
        // In batches, so that a receiver of the progress can end the work soon.
        const std::size_t batch = 8 * scheduler.workers();
        for (std::size_t first = 0; first < doubtful.size(); first += batch) {
            const std::size_t last = std::min(first + batch, doubtful.size());
            for (std::size_t i = first; i < last; ++i)
                reading(doubtful[i]->source.target);
            scheduler.parallelFor(first, last, 1, [&](std::size_t begin, std::size_t end) {
                for (std::size_t i = begin; i < end; ++i)
                    read(*doubtful[i]);
            });
        }
    }

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

    std::vector<Entry*> entriesOfSameSize(const AdvertisedPackageListing& newest)
    {
        std::map<VoFilePath, std::int64_t> sizes;
        for (const AdvertisedFileListing& file : newest.files())
            sizes.emplace(file.target(), file.size().bytes());
        std::vector<Entry*> result;
        for (Entry& entry : m_files) {
            const auto known = sizes.find(entry.file.target);
            if (known == sizes.end() || !IsRegularFile(entry.source.source))
                continue;
            entry.file.size = VoFileSystem::FileSize(entry.source.source);
            if (static_cast<std::uint64_t>(known->second) == entry.file.size)
                result.push_back(&entry);
        }
        return result;
    }

    static void read(Entry& entry)
    {
        try {
            entry.file.checksum = VoFileSystem::Checksum(entry.source.source);
        } catch (const VoException&) {
            entry.file.checksum = VoChecksum();
        }
    }

    std::vector<Entry> m_files;
};

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

std::vector<std::vector<SourceFile>> SortedByAge(std::vector<SourceFile> files, const VoUUID& packageID,
                                                 const VoFilePath& declarationsFile,
                                                 const std::function<void(const VoFilePath&)>& reading,
                                                 const Warn& warn)
{
    if (!VoFileSystem::Exists(declarationsFile))
        return {std::move(files)};
    const VoUniquePtr<AdvertisedPackages> declared = AdvertisedPackages::Open(declarationsFile);
    const std::vector<VoFilePath> definitions = Definitions(*declared, packageID, declarationsFile);
    if (definitions.empty())
        return {std::move(files)};
    const VoUniquePtr<AdvertisedPackageListing> newest = TryOpen(definitions.front(), warn);
    if (!newest)
        return {std::move(files)};

    Contents contents(files);
    contents.compare(*newest, reading);
    PackingOrder order(contents.files());
    order.addEarlier(*newest);
    for (std::size_t i = 1; i < definitions.size() && !order.isDecided(); ++i) {
        if (const VoUniquePtr<AdvertisedPackageListing> earlier = TryOpen(definitions[i], warn))
            order.addEarlier(*earlier);
    }
    return Arranged(std::move(files), order);
}

} // namespace vo::updater::detail
