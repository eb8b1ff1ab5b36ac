#pragma once

#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/TargetIndex.h>

#include <utility>

namespace vo::updater::detail {

/// A release whose files are found by their targets. Read once, it is shared by all who need to know of it.
class IndexedRelease
{
public:
    explicit IndexedRelease(AdvertisedPackageListing release)
        : m_listing(std::move(release))
        , m_byTarget(TableOf(m_listing.files()))
    {
    }

    const AdvertisedPackageListing& listing() const { return m_listing; }
    const FileTable& files() const { return TableOf(m_listing.files()); }
    /// FileTable::None when there is no such file.
    FileTable::Number find(const VoFilePath& target) const { return m_byTarget.find(files(), target); }

private:
    AdvertisedPackageListing m_listing;
    TargetIndex m_byTarget;
};

} // namespace vo::updater::detail
