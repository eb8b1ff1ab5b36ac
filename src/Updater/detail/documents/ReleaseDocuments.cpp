#include <Updater/detail/documents/ReleaseDocuments.h>

#include <Core/VoException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoLocation.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/DocumentPlace.h>
#include <Updater/detail/documents/PackageValidator.h>

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

std::optional<VoString> FindOptional(const DocumentPlace& place, const VoFilePath& document)
{
    auto found = place.find(document);
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

void FindAttributes(AdvertisedPackageListing& package, const VoLocation& definition, const VoStopFlag& stop,
                    const VoDownloadPolicy& downloads)
{
    if (package.attributes())
        return;
    const VoFilePath path(ReleaseAttributes::FileName);
    const DocumentPlace place = DocumentPlace::Of(definition, stop, downloads).first;
    package.setAttributes(AttributesOf(package, FindOptional(place, path), place.nameOf(path)));
}

} // namespace vo::updater::detail
