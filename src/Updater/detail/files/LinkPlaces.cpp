#include <Updater/detail/files/LinkPlaces.h>

#include <Updater/AdvertisedPackageListing.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/documents/ReleaseTree.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace vo::updater::detail {

namespace {

// A file by its target, with what it ought to be at its place.
using Files = std::vector<std::pair<VoFilePath, ExpectedFile>>;

std::vector<LinkPlace> Copies(const ReleaseAttributes& attributes, const VoDirectoryPath& directory, const Files& files)
{
    std::vector<const VoFilePath*> targets;
    std::unordered_map<const VoFilePath*, const ExpectedFile*> expected;
    for (const auto& [target, file] : files) {
        targets.push_back(&target);
        expected.emplace(&target, &file);
    }
    std::vector<LinkPlace> places;
    for (const ReleaseTree::Copy& copy : ReleaseTree(targets, attributes).copies()) {
        const ExpectedFile& file = *expected.at(copy.source);
        const VoFilePath place = directory.appended(copy.place);
        places.push_back({place, VoString(), ExpectedFile{place, file.checksum, file.size}, file.path});
    }
    return places;
}

std::vector<LinkPlace> AsLinks(const ReleaseAttributes& attributes, const VoDirectoryPath& directory)
{
    std::vector<LinkPlace> places;
    for (const ReleaseAttributes::Link& link : attributes.links)
        places.push_back({directory.appended(link.target), link.to});
    return places;
}

} // namespace

std::vector<LinkPlace> LinkPlacesOf(const AdvertisedPackageListing& advertised, const VoDirectoryPath& directory)
{
    if (!advertised.attributes() || advertised.attributes()->links.isEmpty())
        return {};
    if (!LinksAreCopies())
        return AsLinks(*advertised.attributes(), directory);
    Files files;
    for (const AdvertisedFileListing& file : advertised.files())
        files.emplace_back(file.target(), Expected(directory.appended(file.target()), file));
    return Copies(*advertised.attributes(), directory, files);
}

std::vector<LinkPlace> LinkPlacesOf(const InstalledPackageListing& installed)
{
    if (!installed.attributes() || installed.attributes()->links.isEmpty())
        return {};
    const VoDirectoryPath& directory = installed.installationDirectory();
    std::unordered_set<std::string> taken;
    Files files;
    for (const InstalledFileListing& file : installed.files()) {
        const VoFilePath path = file.path();
        const std::string_view text = Bytes(path);
        taken.emplace(text);
        if (LinksAreCopies() && text.substr(0, Bytes(directory).size()) == Bytes(directory))
            files.emplace_back(VoFilePath(VoString(std::string(text.substr(Bytes(directory).size())))),
                               Expected(path, file));
    }
    std::vector<LinkPlace> places = LinksAreCopies() ? Copies(*installed.attributes(), directory, files)
                                                     : AsLinks(*installed.attributes(), directory);
    const auto isTaken = [&taken](const LinkPlace& link) { return taken.count(std::string(Bytes(link.place))) > 0; };
    places.erase(std::remove_if(places.begin(), places.end(), isTaken), places.end());
    return places;
}

bool IsInPlace(const LinkPlace& link)
{
    if (link.copy)
        return IsSound(*link.copy);
    const auto to = ReadLink(link.place);
    return to && to->equal(link.to, VoString::CaseSensitive);
}

bool IsReplaceable(const LinkPlace& link)
{
    return link.copy ? KindOf(link.place) == FileKind::File : ReadLink(link.place).has_value();
}

} // namespace vo::updater::detail
