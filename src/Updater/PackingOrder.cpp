#include <Updater/PackingOrder.h>

#include <Core/VoString.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/TargetIndex.h>

#include <algorithm>
#include <map>
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
    struct Entry
    {
        File file;
        FileTable::Number known = 0; // among those that are followed, from the newest earlier release on
        std::size_t unchanged = 0;   // in how many earlier releases, counted from the newest
    };

    std::vector<Entry> entries;
    std::vector<std::size_t> followed; // the entries that every release so far has with the same content
    FileTable known;                   // their IDs
    std::size_t releases = 0;

    void find(const AdvertisedPackageListing& newest);
    void follow(const AdvertisedPackageListing& release);
};

// The newest release has the IDs that the files of the new one keep, by their targets, letter case left aside as the
// builder does.
void PackingOrder::Private::find(const AdvertisedPackageListing& newest)
{
    const FileTable& files = TableOf(newest.files());
    const TargetIndex byTarget(files);
    for (std::size_t i : followed) {
        const FileTable::Number number = byTarget.find(files, entries[i].file.target);
        if (number == FileTable::None || !HasContent(ListedFile(files, number), entries[i].file))
            continue;
        entries[i].known = known.addAt({}, files, number);
        entries[i].unchanged = 1;
    }
}

void PackingOrder::Private::follow(const AdvertisedPackageListing& release)
{
    const FileTable& files = TableOf(release.files());
    for (std::size_t i : followed) {
        const FileTable::Number number = files.find(known, entries[i].known);
        if (number != FileTable::None && HasContent(ListedFile(files, number), entries[i].file))
            ++entries[i].unchanged;
    }
}

PackingOrder::PackingOrder(const VoDeque<File>& files)
    : m_private(new Private)
{
    for (const File& file : files) {
        m_private->followed.push_back(m_private->entries.size());
        m_private->entries.push_back({file, 0, 0});
    }
}

PackingOrder::~PackingOrder() = default;

void PackingOrder::addEarlier(const AdvertisedPackageListing& release)
{
    Private& state = *m_private;
    if (state.releases == 0)
        state.find(release);
    else
        state.follow(release);
    ++state.releases;
    auto& followed = state.followed;
    followed.erase(std::remove_if(followed.begin(), followed.end(),
                                  [&](std::size_t i) { return state.entries[i].unchanged < state.releases; }),
                   followed.end());
}

bool PackingOrder::isDecided() const
{
    return m_private->followed.empty();
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
    std::map<std::size_t, std::vector<const VoFilePath*>> ages;
    for (const Private::Entry& entry : m_private->entries)
        ages[entry.unchanged].push_back(&entry.file.target);
    VoDeque<VoDeque<VoFilePath>> result;
    for (auto& [unchanged, targets] : ages) {
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
    std::vector<std::size_t> result;
    for (const Private::Entry& entry : m_private->entries)
        result.push_back(entry.unchanged);
    return result;
}

} // namespace vo::updater
