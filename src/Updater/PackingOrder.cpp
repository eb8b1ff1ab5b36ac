#include <Updater/PackingOrder.h>

#include <Core/VoString.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/TargetIndex.h>
#include <Updater/detail/publish/FileAges.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace vo::updater {

using namespace detail;

namespace {

bool HasContent(const ListedFile& listed, const PackingOrder::File& file)
{
    return static_cast<std::uint64_t>(listed.length()) == file.size && listed.checksum() == file.checksum;
}

} // namespace

struct PackingOrder::Private
{
    std::vector<File> files;
    FileTable known; // what the newest earlier release has of them with the same content
    std::optional<FileAges> ages;

    void find(const AdvertisedPackageListing& newest);
};

// The newest release has the IDs that the files of the new one keep, by their targets, letter case left aside as the
// builder does.
void PackingOrder::Private::find(const AdvertisedPackageListing& newest)
{
    const FileTable& listed = TableOf(newest.files());
    const TargetIndex byTarget(listed);
    std::vector<FileTable::Number> numbers;
    for (const File& file : files) {
        const FileTable::Number number = byTarget.find(listed, file.target);
        const bool isSame = number != FileTable::None && HasContent(ListedFile(listed, number), file);
        numbers.push_back(isSame ? known.addAt({}, listed, number) : FileTable::None);
    }
    ages.emplace(known, std::move(numbers));
}

PackingOrder::PackingOrder(const VoDeque<File>& files)
    : m_private(new Private)
{
    m_private->files.assign(files.begin(), files.end());
}

PackingOrder::~PackingOrder() = default;

void PackingOrder::addEarlier(const AdvertisedPackageListing& release)
{
    if (m_private->ages)
        m_private->ages->addEarlier(TableOf(release.files()));
    else
        m_private->find(release);
}

bool PackingOrder::isDecided() const
{
    return m_private->ages ? m_private->ages->isDecided() : m_private->files.empty();
}

VoDeque<VoFilePath> PackingOrder::targets() const
{
    VoDeque<VoFilePath> result;
    for (const VoDeque<VoFilePath>& age : targetsByAge())
        for (const VoFilePath& target : age)
            result.pushBack(target);
    return result;
}

VoDeque<VoDeque<VoFilePath>> PackingOrder::targetsByAge() const
{
    std::map<std::size_t, std::vector<const VoFilePath*>> byAge;
    const std::vector<std::size_t> ages = this->ages();
    for (std::size_t i = 0; i < ages.size(); ++i)
        byAge[ages[i]].push_back(&m_private->files[i].target);
    VoDeque<VoDeque<VoFilePath>> result;
    for (auto& [unchanged, targets] : byAge) {
        std::sort(targets.begin(), targets.end(), [](const VoFilePath* a, const VoFilePath* b) {
            return a->path().toStdString() < b->path().toStdString();
        });
        VoDeque<VoFilePath> age;
        for (const VoFilePath* target : targets)
            age.pushBack(*target);
        result.pushBack(std::move(age));
    }
    return result;
}

std::vector<std::size_t> PackingOrder::ages() const
{
    return m_private->ages ? m_private->ages->ages() : std::vector<std::size_t>(m_private->files.size());
}

} // namespace vo::updater
