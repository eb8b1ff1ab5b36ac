#include <Updater/detail/install/FileClaims.h>

#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/PackageDifferences.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/LinkPlaces.h>
#include <Updater/detail/files/PathIndex.h>
#include <Updater/detail/registry/FileOwners.h>

#include <optional>
#include <string>
#include <unordered_map>

namespace vo::updater::detail {

namespace {

/// The files and links of the release that is installed. The files are only indexed when one is asked for under another
/// name.
class OwnFiles
{
public:
    explicit OwnFiles(const InstalledPackageListing* installed)
        : m_installed(installed)
    {
        if (!installed)
            return;
        for (const LinkPlace& link : LinkPlacesOf(*installed))
            m_links.emplace(Bytes(link.place), link);
    }

    const InstalledFileListing* find(const VoUUID& id, const VoFilePath& place)
    {
        if (!m_installed)
            return nullptr;
        const InstalledFileListing* record = m_installed->file(id);
        if (record && Bytes(record->path()) == Bytes(place))
            return record;
        if (!m_index) {
            m_index.emplace();
            for (std::size_t i = 0; i < m_installed->files().size(); ++i)
                m_index->add(m_installed->files()[i].path(), i);
        }
        const auto number = m_index->find(place);
        return number ? &m_installed->files()[*number] : nullptr;
    }

    // Whether a link of the release, or its copy, is there; in its place may be what somebody else has put there.
    bool isLink(const VoFilePath& place) const
    {
        const auto found = m_links.find(std::string(Bytes(place)));
        return found != m_links.end() && IsReplaceable(found->second);
    }

private:
    const InstalledPackageListing* m_installed;
    std::optional<PathIndex> m_index;
    std::unordered_map<std::string, LinkPlace> m_links; // by place
};

} // namespace

FileClaims FindClaims(const PackageDifferences& differences, const InstalledPackageListing* installed,
                      const AdvertisedPackageListing& advertised,
                      const std::function<VoFilePath(const AdvertisedFileListing&)>& placeOf, FileOwners& owners)
{
    FileClaims claims;
    OwnFiles own(installed);
    for (const FileDifference& difference : differences.fileDifferences()) {
        if (difference.type() == FileDifference::Removed) {
            const InstalledFileListing* file = installed ? installed->file(difference.fileID()) : nullptr;
            if (const FileOwners::Owned* owned = file ? owners.find(file->path()) : nullptr)
                claims.kept.pushBack({file->path(), owned->packageID, owned->name});
            continue;
        }
        const AdvertisedFileListing* file = advertised.file(difference.fileID());
        if (!file)
            continue;
        const VoFilePath place = placeOf(*file);
        const FileOwners::Owned* owned = owners.find(place);
        const FileKind kind = KindOf(place);
        if (!owned && (kind == FileKind::None || kind == FileKind::Directory))
            continue;
        const bool isOwn = own.find(file->id(), place) != nullptr;
        if (owned && !(isOwn && owned->file.checksum() == file->checksum())) {
            claims.conflicts.pushBack({place, owned->packageID, owned->name});
        } else if (!isOwn && Examine(Expected(place, *file), Links::Kept, VoStopFlag()) == FileState::Sound) {
            claims.adopted.pushBack(place);
            claims.adoptedIDs.insert(file->id());
        } else if (!isOwn && !own.isLink(place)) {
            claims.foreign.pushBack(place);
        }
    }
    return claims;
}

} // namespace vo::updater::detail
