#include <Updater/detail/documents/ReleaseDocuments.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <FileSystem/detail/SafePath.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/DocumentPlace.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <string>

namespace vo::updater::detail {

namespace {

bool IsPage(const VoString& bytes)
{
    const std::string& text = bytes.toStdString();
    const std::size_t start = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    if (start == std::string::npos)
        return false;
    const VoString beginning = FoldedName(VoString(text.substr(start, 14)));
    return beginning.startsWith("<!doctype html") || beginning.startsWith("<html");
}

} // namespace

VoFilePath Beside(const VoFilePath& definition, const char* document)
{
    return definition.parent().file(document);
}

std::optional<VoString> FindOptional(const DocumentPlace& place, const VoFilePath& document, std::uint64_t most)
{
    auto found = place.find(document, most);
    if (found && IsPage(*found))
        found.reset();
    return found;
}

std::shared_ptr<const ReleaseAttributes> AttributesOf(const AbstractPackage& release,
                                                      const std::optional<VoString>& bytes, const VoString& name)
{
    if (!bytes)
        return std::make_shared<ReleaseAttributes>(release.packageID(), release.versionID());
    auto attributes = std::make_shared<ReleaseAttributes>(ReleaseAttributes::Parse(*bytes, name));
    if (attributes->packageID != release.packageID() || attributes->versionID != release.versionID())
        throw VoValidationException("Invalid attributes: not those of the release: " + name);
    return attributes;
}

std::shared_ptr<const ReleasePatches> TryPatches(const AbstractPackage& release, const VoString& name,
                                                 const VoStopFlag& stop,
                                                 const std::function<std::optional<VoString>()>& read)
{
    try {
        const auto bytes = read();
        if (!bytes)
            return nullptr;
        auto patches = std::make_shared<ReleasePatches>(ReleasePatches::Parse(*bytes, name));
        if (patches->packageID == release.packageID() && patches->versionID == release.versionID())
            return patches;
        Log().warning("Patches are not those of the release: " + name);
    } catch (const VoException&) {
        stop.throwIfStopped();
        Log().warning("Patches are not used: " + name + ": " + CurrentExceptionText());
    }
    return nullptr;
}

bool IsRecorded(const VoUUID& packageID)
{
    // Another ID is that of no installed package.
    return vo::detail::SafeName(packageID.toString()) && VoFileSystem::Exists(ListingPath(packageID));
}

void FindAttributes(AdvertisedPackageListing& package, const VoLocation& definition, const VoStopFlag& stop,
                    const VoDownloadPolicy& downloads)
{
    if (package.attributes())
        return;
    const VoFilePath path(ReleaseAttributes::FileName);
    const DocumentPlace place = DocumentPlace::Of(definition, stop, downloads).first;
    package.setAttributes(AttributesOf(package, FindOptional(place, path, LargestDocument), place.nameOf(path)));
}

void FindDocuments(AdvertisedPackageListing& package, const VoLocation& definition, const VoStopFlag& stop,
                   const VoDownloadPolicy& downloads)
{
    if (package.attributes())
        return;
    FindAttributes(package, definition, stop, downloads);
    if (!package.patches() && IsRecorded(package.packageID()))
        package.setPatches(ReleasePatches::Find(package, definition, stop, downloads));
}

} // namespace vo::updater::detail
