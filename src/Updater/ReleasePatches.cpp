#include <Updater/ReleasePatches.h>

#include <Core/VoException.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AbstractFileListing.h>
#include <Updater/AbstractPackage.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/DocumentPlace.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <set>
#include <string>

namespace vo::updater {

using namespace detail;

namespace {

constexpr std::size_t MostPatches = 100'000;
constexpr std::uint64_t LargestFile = INT64_MAX;

void RequirePatch(bool isSound, const char* what, const VoUUID& id)
{
    if (!isSound)
        throw VoValidationException("Invalid patches: " + VoString(what) + id.toString());
}

void WriteContent(VoXMLElementWriter& element, const char* size, const char* checksum,
                  const ReleasePatches::Content& content)
{
    WriteNumber(element, size, content.size);
    WriteAttribute(element, checksum, content.checksum);
}

ReleasePatches::Content ReadContent(VoXMLStreamElementLoader& element, const char* size, const char* checksum)
{
    return {ReadNumber(element, size), ReadAttribute<VoChecksum>(element, checksum)};
}

ReleasePatches::Patch ReadPatch(VoXMLStreamElementLoader& element)
{
    ReleasePatches::Patch patch;
    patch.id = ReadAttribute<VoUUID>(element, attribute::Id);
    patch.fileID = ReadAttribute<VoUUID>(element, attribute::FileID);
    patch.size = ReadNumber(element, attribute::Size);
    patch.checksum = ReadAttribute<VoChecksum>(element, attribute::Checksum);
    patch.before = ReadContent(element, attribute::BeforeSize, attribute::Before);
    patch.after = ReadContent(element, attribute::AfterSize, attribute::After);
    return patch;
}

} // namespace

// On Windows no object of the library would have them otherwise, for those who refer to them.
// NOLINTBEGIN(readability-redundant-declaration)
constexpr const char* ReleasePatches::FileName;
constexpr const char* ReleasePatches::Directory;
constexpr const char* ReleasePatches::Suffix;
constexpr std::uint64_t ReleasePatches::LargestSize;
// NOLINTEND(readability-redundant-declaration)

bool ReleasePatches::Content::isOf(const AbstractFileListing& file) const
{
    return file.size().bytes() >= 0 && static_cast<std::uint64_t>(file.size().bytes()) == size &&
           file.checksum() == checksum;
}

ChunkListing ReleasePatches::Patch::file() const
{
    const VoFilePath path = VoDirectoryPath().directory(Directory).file(id.toString() + Suffix);
    return ChunkListing(id, checksum, VoDownloadSize(static_cast<std::int64_t>(size)), path);
}

ReleasePatches::ReleasePatches() = default;

ReleasePatches::ReleasePatches(const VoUUID& package, const VoUUID& version)
    : packageID(package)
    , versionID(version)
{
}

ReleasePatches::ReleasePatches(const ReleasePatches& other) = default;
ReleasePatches::ReleasePatches(ReleasePatches&& other) noexcept = default;
ReleasePatches& ReleasePatches::operator=(const ReleasePatches& other) = default;
ReleasePatches& ReleasePatches::operator=(ReleasePatches&& other) noexcept = default;
ReleasePatches::~ReleasePatches() = default;

ReleasePatches::ReleasePatches(VoXMLStreamElementLoader& element)
    : packageID(ReadAttribute<VoUUID>(element, attribute::PackageID))
    , versionID(ReadAttribute<VoUUID>(element, attribute::VersionID))
{
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        if (child.name() != tag::Patch)
            return;
        if (patches.size() >= MostPatches)
            throw VoValidationException("Invalid patches: too many elements");
        patches.pushBack(ReadPatch(child));
    });
    validate();
}

void ReleasePatches::validate() const
{
    std::set<std::string> names;
    for (const Patch& patch : patches) {
        RequireSafeIdentifier(patch.id);
        RequirePatch(names.insert(FoldedName(patch.id.toString()).toStdString()).second, "said twice: ", patch.id);
        RequirePatch(patch.size > 0 && patch.size <= LargestFile, "size of ", patch.id);
        RequirePatch(patch.before.size <= LargestFile && patch.after.size > 0 && patch.after.size <= LargestFile,
                     "size of the file of ", patch.id);
    }
}

ReleasePatches ReleasePatches::Parse(const VoString& bytes, const VoString& name)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Patches, Build<ReleasePatches>);
    const auto patches = DynamicCast<ReleasePatches>(ParseDocument(loader, bytes, name));
    if (!patches)
        FailLoading(name, "Patches failed to load");
    return *patches;
}

std::shared_ptr<const ReleasePatches> ReleasePatches::Find(const AbstractPackage& release, const VoLocation& definition,
                                                           const VoStopFlag& stop, const VoDownloadPolicy& downloads)
{
    const DocumentPlace place = DocumentPlace::Of(definition, stop, downloads).first;
    const VoFilePath path(FileName);
    return TryPatches(release, place.nameOf(path), stop, [&] { return FindOptional(place, path, LargestSize); });
}

VoString ReleasePatches::toDocument() const
{
    validate();
    return DocumentText(tag::Patches, *this);
}

XMLObject::Type ReleasePatches::objectType() const
{
    return Type::ReleasePatches;
}

void ReleasePatches::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::PackageID, packageID);
    WriteAttribute(element, attribute::VersionID, versionID);
}

void ReleasePatches::writeElements(VoXMLElementWriter& element) const
{
    for (const Patch& patch : patches) {
        const auto child = element.createElement(tag::Patch);
        WriteAttribute(*child, attribute::Id, patch.id);
        WriteAttribute(*child, attribute::FileID, patch.fileID);
        WriteNumber(*child, attribute::Size, patch.size);
        WriteAttribute(*child, attribute::Checksum, patch.checksum);
        WriteContent(*child, attribute::BeforeSize, attribute::Before, patch.before);
        WriteContent(*child, attribute::AfterSize, attribute::After, patch.after);
    }
}

} // namespace vo::updater
