#include <Updater/detail/install/AttributePlan.h>

#include <Core/VoString.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstallationPlan.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/install/FileClaims.h>
#include <Updater/detail/registry/FileOwners.h>

#include <string>
#include <string_view>

namespace vo::updater::detail {

namespace {

using Targets = std::unordered_set<std::string_view>; // views of paths that outlive them

Targets ProgramsOf(const AbstractPackageListing* listing)
{
    Targets programs;
    if (listing && listing->attributes()) {
        for (const VoFilePath& target : listing->attributes()->executables)
            programs.insert(Bytes(target));
    }
    return programs;
}

// All files, whatever the release before said of them: one that is taken over, or that an interrupted removal left, may
// be a program still.
void FindPrograms(AttributePlan& plan, const InstalledPackageListing* installed,
                  const AdvertisedPackageListing& advertised)
{
    const Targets now = ProgramsOf(&advertised);
    if (!MarksExecutables() || (now.empty() && ProgramsOf(installed).empty()))
        return;
    plan.marksFiles = true;
    for (const AdvertisedFileListing& file : advertised.files()) {
        if (now.count(Bytes(file.target())) > 0)
            plan.programs.insert(file.id());
    }
}

// The places above a path, each with a separator behind.
template <typename Test>
bool IsBelowAny(const VoFilePath& place, Test isOne)
{
    for (VoDirectoryPath directory = place.parent(); !directory.isNull(); directory = directory.parent()) {
        if (isOne(std::string(Bytes(directory))))
            return true;
    }
    return false;
}

void FindRemoved(AttributePlan& plan, const InstalledPackageListing& installed,
                 const AdvertisedPackageListing& advertised, const VoDirectoryPath& directory)
{
    const std::vector<LinkPlace> old = LinkPlacesOf(installed);
    if (old.empty())
        return;
    std::unordered_set<std::string> kept;
    for (const LinkPlace& link : plan.links)
        kept.emplace(Bytes(link.place));
    for (const AdvertisedFileListing& file : advertised.files())
        kept.emplace(Bytes(directory.appended(file.target())));
    std::unordered_set<std::string> going;
    for (const LinkPlace& link : old) {
        if (kept.count(std::string(Bytes(link.place))) > 0 || !IsReplaceable(link))
            continue;
        plan.removed.push_back(link.place);
        going.insert(std::string(Bytes(link.place)) + '\\');
    }
    const auto isGoing = [&going](const std::string& place) { return going.count(place) > 0; };
    for (const AdvertisedFileListing& file : advertised.files()) {
        if (!going.empty() && IsBelowAny(directory.appended(file.target()), isGoing))
            plan.behindLinks.insert(file.id());
    }
    for (std::size_t i = 0; i < plan.links.size(); ++i)
        plan.isMade[i] = plan.isMade[i] || IsBelowAny(plan.links[i].place, isGoing);
}

// The places of the release before, files and links.
std::unordered_set<std::string> OwnPlaces(const InstalledPackageListing* installed)
{
    std::unordered_set<std::string> places;
    if (!installed)
        return places;
    for (const InstalledFileListing& file : installed->files())
        places.emplace(Bytes(file.path()));
    for (const LinkPlace& link : LinkPlacesOf(*installed))
        places.emplace(Bytes(link.place));
    return places;
}

} // namespace

std::vector<VoFilePath> AttributePlan::places() const
{
    std::vector<VoFilePath> result;
    for (const LinkPlace& link : links)
        result.push_back(link.place);
    for (const VoDirectoryPath& folder : folders)
        result.push_back(folder.file("any"));
    return result;
}

AttributePlan PlanAttributes(const InstalledPackageListing* installed, const AdvertisedPackageListing& advertised,
                             const VoDirectoryPath& directory)
{
    AttributePlan plan;
    plan.links = LinkPlacesOf(advertised, directory);
    for (const LinkPlace& link : plan.links)
        plan.isMade.push_back(!IsInPlace(link));
    if (const auto& attributes = advertised.attributes()) {
        for (const VoFilePath& folder : attributes->folders)
            plan.folders.push_back(AsDirectory(directory.appended(folder)));
        // A release that says nothing leaves permissions as they are.
        if (!attributes->isEmpty())
            FindPrograms(plan, installed, advertised);
    }
    if (installed)
        FindRemoved(plan, *installed, advertised, directory);
    return plan;
}

void ClaimLinks(const AttributePlan& plan, const InstalledPackageListing* installed, FileOwners& owners,
                FileClaims& claims)
{
    if (plan.links.empty())
        return;
    const std::unordered_set<std::string> own = OwnPlaces(installed);
    for (const LinkPlace& link : plan.links) {
        const bool isOwn = own.count(std::string(Bytes(link.place))) > 0;
        const FileOwners::Owned* owned = owners.find(link.place);
        if (owned && !(isOwn && !link.copy && owned->link.equal(link.to, VoString::CaseSensitive))) {
            claims.conflicts.pushBack({link.place, owned->packageID, owned->name});
            continue;
        }
        const FileKind kind = KindOf(link.place);
        if (isOwn || owned || kind == FileKind::None || kind == FileKind::Directory)
            continue;
        (IsInPlace(link) ? claims.adopted : claims.foreign).pushBack(link.place);
    }
}

bool IsMarkedWrongly(const AttributePlan& plan, const AdvertisedFileListing& file, const VoDirectoryPath& directory)
{
    if (!plan.marksFiles)
        return false;
    const VoFilePath place = directory.appended(file.target());
    return KindOf(place) == FileKind::File && IsExecutable(place) != (plan.programs.count(file.id()) > 0);
}

void ShowAttributes(const AttributePlan& attributes, InstallationPlan& plan)
{
    plan.copiesLinks = LinksAreCopies();
    for (std::size_t i = 0; i < attributes.links.size(); ++i) {
        if (attributes.isMade[i])
            plan.links.pushBack({attributes.links[i].place, attributes.links[i].to});
    }
    for (const VoFilePath& link : attributes.removed)
        plan.removedLinks.pushBack(link);
    for (const InstallationPlan::File& file : plan.files) {
        if (attributes.programs.count(file.id) > 0)
            plan.programs.pushBack(file.path);
    }
    for (const VoDirectoryPath& folder : attributes.folders) {
        if (!VoFileSystem::IsDirectory(folder))
            plan.folders.pushBack(folder);
    }
}

} // namespace vo::updater::detail
