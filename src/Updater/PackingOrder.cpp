#include <Updater/PackingOrder.h>

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <Updater/AdvertisedPackageListing.h>

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

namespace vo::updater {

namespace {

bool HasContent(const AdvertisedFileListing& listing, const PackingOrder::File& file)
{
    return static_cast<std::uint64_t>(listing.size().bytes()) == file.size && listing.checksum() == file.checksum;
}

} // namespace

struct PackingOrder::Private
{
    struct Entry
    {
        File file;
        std::optional<VoUUID> id;  // known from the newest earlier release on
        std::size_t unchanged = 0; // in how many earlier releases, counted from the newest
    };

    std::vector<Entry> entries;
    std::vector<std::size_t> followed; // the entries that every release so far has with the same content
    std::size_t releases = 0;

    void find(const AdvertisedPackageListing& newest);
    void follow(const AdvertisedPackageListing& release);
};

// The newest release has the IDs that the files of the new one keep, by their targets.
void PackingOrder::Private::find(const AdvertisedPackageListing& newest)
{
    std::map<VoFilePath, const AdvertisedFileListing*> byTarget; // letter case left aside, as the builder does
    for (const AdvertisedFileListing& listing : newest.files())
        byTarget.emplace(listing.target(), &listing);
    for (std::size_t i : followed) {
        const auto known = byTarget.find(entries[i].file.target);
        if (known == byTarget.end() || !HasContent(*known->second, entries[i].file))
            continue;
        entries[i].id = known->second->id();
        entries[i].unchanged = 1;
    }
}

void PackingOrder::Private::follow(const AdvertisedPackageListing& release)
{
    for (std::size_t i : followed) {
        const AdvertisedFileListing* known = release.file(*entries[i].id);
        if (known && HasContent(*known, entries[i].file))
            ++entries[i].unchanged;
    }
}

PackingOrder::PackingOrder(const VoDeque<File>& files)
    : m_private(new Private)
{
    for (const File& file : files) {
        m_private->followed.push_back(m_private->entries.size());
        m_private->entries.push_back({file, std::nullopt, 0});
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
    std::vector<const Private::Entry*> order;
    for (const Private::Entry& entry : m_private->entries)
        order.push_back(&entry);
    std::sort(order.begin(), order.end(), [](const Private::Entry* a, const Private::Entry* b) {
        if (a->unchanged != b->unchanged)
            return a->unchanged < b->unchanged;
        return a->file.target.path().toStdString() < b->file.target.path().toStdString();
    });
    VoDeque<VoFilePath> result;
    for (const Private::Entry* entry : order)
        result.pushBack(entry->file.target);
    return result;
}

} // namespace vo::updater
