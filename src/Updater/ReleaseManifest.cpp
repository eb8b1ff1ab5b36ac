#include <Updater/ReleaseManifest.h>

#include <Core/VoException.h>
#include <FileSystem/VoUrl.h>
#include <FileSystem/detail/SafePath.h>
#include <Time/VoDateTime.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>
#include <set>
#include <string>

namespace vo::updater {

using namespace detail;

namespace {

constexpr std::size_t MostItems = 100'000;
constexpr std::size_t LongestNotes = 2000;

void Require(bool sound, const char* what, const VoString& item = VoString())
{
    if (!sound)
        throw VoValidationException("Invalid manifest: " + VoString(what) + item);
}

void WriteInstant(VoXMLElementWriter& element, const char* name, VoTimePoint instant)
{
    element.writeAttribute(name, instant.toString());
}

VoTimePoint ReadInstant(const VoString& text)
{
    return VoDateTime::Deserialize(text).timePoint();
}

void WriteDocument(VoXMLElementWriter& element, const ReleaseManifest::Document& document)
{
    WriteAttribute(element, attribute::Path, document.path);
    WriteNumber(element, attribute::Size, document.size);
    WriteAttribute(element, attribute::Checksum, document.checksum);
}

void ReadDocument(VoXMLStreamElementLoader& element, ReleaseManifest::Document& document)
{
    document.path = ReadAttribute<VoFilePath>(element, attribute::Path);
    document.size = ReadNumber(element, attribute::Size);
    document.checksum = ReadAttribute<VoChecksum>(element, attribute::Checksum);
}

ReleaseManifest::Release ReadRelease(VoXMLStreamElementLoader& element)
{
    ReleaseManifest::Release release;
    ReadDocument(element, release);
    release.packageID = ReadAttribute<VoUUID>(element, attribute::PackageID);
    release.versionID = ReadAttribute<VoUUID>(element, attribute::VersionID);
    release.version = ReadAttribute<VoVersion>(element, attribute::Version);
    release.channel = element.attribute(attribute::Channel);
    if (element.hasAttribute(attribute::Share))
        release.share = ReadNumber(element, attribute::Share);
    if (element.hasAttribute(attribute::Start))
        release.start = ReadInstant(element.attribute(attribute::Start));
    if (element.hasAttribute(attribute::From))
        release.from = ReadAttribute<VoVersion>(element, attribute::From);
    release.isWithdrawn = element.attribute(attribute::Withdrawn, "false") == "true";
    release.notes = element.attribute(attribute::Notes, VoString());
    return release;
}

void WriteRelease(VoXMLElementWriter& element, const ReleaseManifest::Release& release)
{
    WriteAttribute(element, attribute::PackageID, release.packageID);
    WriteAttribute(element, attribute::VersionID, release.versionID);
    WriteAttribute(element, attribute::Version, release.version);
    WriteDocument(element, release);
    element.writeAttribute(attribute::Channel, release.channel);
    if (release.share != ReleaseManifest::WholeShare)
        WriteNumber(element, attribute::Share, release.share);
    if (release.start != VoTimePoint())
        WriteInstant(element, attribute::Start, release.start);
    if (release.from != VoVersion())
        WriteAttribute(element, attribute::From, release.from);
    if (release.isWithdrawn)
        element.writeAttribute(attribute::Withdrawn, "true");
    if (!release.notes.isEmpty())
        element.writeAttribute(attribute::Notes, release.notes);
}

bool IsWebAddress(const VoString& text)
{
    if (text.size() > LongestNotes)
        return false;
    const VoUrl url(text);
    return url.isValid() && (url.scheme() == "http" || url.scheme() == "https");
}

void ValidateRelease(const ReleaseManifest::Release& release)
{
    RequireSafeIdentifier(release.packageID);
    Require(!release.versionID.toString().isEmpty(), "release without version ID: ", release.path.path());
    RequireSafeDefinitionPath(release.path);
    Require(vo::detail::SafeName(release.channel), "channel ", release.channel);
    Require(release.share <= ReleaseManifest::WholeShare, "share of ", release.path.path());
    Require(release.notes.isEmpty() || IsWebAddress(release.notes), "URL of notes: ", release.notes);
}

} // namespace

// On Windows no object of the library would have them otherwise, for those who refer to them.
// NOLINTBEGIN(readability-redundant-declaration)
constexpr const char* ReleaseManifest::FileName;
constexpr std::uint64_t ReleaseManifest::WholeShare;
constexpr std::uint64_t ReleaseManifest::LargestSerial;
constexpr std::uint64_t ReleaseManifest::LargestSize;
// NOLINTEND(readability-redundant-declaration)

bool ReleaseManifest::Release::isOfferedTo(std::uint64_t place) const
{
    return place < share;
}

ReleaseManifest::ReleaseManifest() = default;
ReleaseManifest::ReleaseManifest(const ReleaseManifest& other) = default;
ReleaseManifest::ReleaseManifest(ReleaseManifest&& other) noexcept = default;
ReleaseManifest& ReleaseManifest::operator=(const ReleaseManifest& other) = default;
ReleaseManifest& ReleaseManifest::operator=(ReleaseManifest&& other) noexcept = default;
ReleaseManifest::~ReleaseManifest() = default;

ReleaseManifest::ReleaseManifest(VoXMLStreamElementLoader& element)
    : serial(ReadNumber(element, attribute::Serial))
    , made(ReadInstant(element.attribute(attribute::Made)))
    , expires(ReadInstant(element.attribute(attribute::Expires)))
{
    element.processChildren([this](VoXMLStreamElementLoader& child) { read(child); });
    validate();
}

void ReleaseManifest::read(VoXMLStreamElementLoader& child)
{
    Require(declarations.size() + packages.size() + releases.size() + documents.size() < MostItems,
            "too many elements");
    if (child.name() == tag::Release) {
        releases.pushBack(ReadRelease(child));
    } else if (child.name() == tag::Declarations || child.name() == tag::Document) {
        Document document;
        ReadDocument(child, document);
        (child.name() == tag::Document ? documents : declarations).pushBack(document);
    } else if (child.name() == tag::Package) {
        packages.pushBack(
            {ReadAttribute<VoUUID>(child, attribute::Id), ReadAttribute<VoVersion>(child, attribute::Lowest)});
    }
}

void ReleaseManifest::validate() const
{
    Require(serial > 0 && serial <= LargestSerial, "serial number");
    Require(made < expires, "it expires before it was made");
    std::set<std::string> paths;
    std::set<std::string> identities;
    const auto requireNew = [](std::set<std::string>& known, const std::string& text) {
        Require(known.insert(text).second, "said twice: ", VoString(text));
    };
    for (const VoDeque<Document>* listed : {&declarations, &documents}) {
        for (const Document& document : *listed) {
            RequireSafeDefinitionPath(document.path);
            requireNew(paths, document.path.path().toStdString());
        }
    }
    for (const Release& release : releases) {
        ValidateRelease(release);
        requireNew(paths, release.path.path().toStdString());
        requireNew(identities,
                   release.packageID.toString().toStdString() + " " + release.versionID.toString().toStdString());
    }
    for (const Package& package : packages)
        RequireSafeIdentifier(package.id);
}

ReleaseManifest ReleaseManifest::Parse(const VoString& bytes, const VoString& name)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Manifest, Build<ReleaseManifest>);
    const auto manifest = DynamicCast<ReleaseManifest>(ParseDocument(loader, bytes, name));
    if (!manifest)
        FailLoading(name, "Manifest failed to load");
    return *manifest;
}

VoString ReleaseManifest::toDocument() const
{
    validate();
    return DocumentText(tag::Manifest, *this);
}

const ReleaseManifest::Release* ReleaseManifest::release(const VoUUID& packageID, const VoUUID& versionID) const
{
    const auto found = std::find_if(releases.begin(), releases.end(), [&](const Release& release) {
        return release.packageID == packageID && release.versionID == versionID;
    });
    return found == releases.end() ? nullptr : &*found;
}

ReleaseManifest::Release* ReleaseManifest::release(const VoUUID& packageID, const VoUUID& versionID)
{
    return const_cast<Release*>(static_cast<const ReleaseManifest&>(*this).release(packageID, versionID));
}

const ReleaseManifest::Document* ReleaseManifest::document(const VoFilePath& path) const
{
    // Exactly: a server tells letter cases apart.
    const auto hasPath = [&](const Document& document) {
        return document.path.path().equal(path.path(), VoString::CaseSensitive);
    };
    for (const VoDeque<Document>* listed : {&declarations, &documents}) {
        const auto other = std::find_if(listed->begin(), listed->end(), hasPath);
        if (other != listed->end())
            return &*other;
    }
    const auto found = std::find_if(releases.begin(), releases.end(), hasPath);
    return found == releases.end() ? nullptr : &*found;
}

VoVersion ReleaseManifest::lowest(const VoUUID& packageID) const
{
    VoVersion lowest;
    for (const Package& package : packages) {
        if (package.id == packageID)
            lowest = std::max(lowest, package.lowest);
    }
    return lowest;
}

void ReleaseManifest::raiseLowest(const VoUUID& packageID, const VoVersion& version)
{
    if (lowest(packageID) < version)
        packages.pushBack({packageID, version});
}

VoString ReleaseManifest::signedComment() const
{
    return "serial " + VoString(serial) + ", expires " + expires.toString();
}

XMLObject::Type ReleaseManifest::objectType() const
{
    return Type::ReleaseManifest;
}

void ReleaseManifest::writeAttributes(VoXMLElementWriter& element) const
{
    WriteNumber(element, attribute::Serial, serial);
    WriteInstant(element, attribute::Made, made);
    WriteInstant(element, attribute::Expires, expires);
}

void ReleaseManifest::writeElements(VoXMLElementWriter& element) const
{
    for (const Document& document : declarations)
        WriteDocument(*element.createElement(tag::Declarations), document);
    for (const Package& package : packages) {
        const auto child = element.createElement(tag::Package);
        WriteAttribute(*child, attribute::Id, package.id);
        WriteAttribute(*child, attribute::Lowest, package.lowest);
    }
    for (const Release& release : releases)
        WriteRelease(*element.createElement(tag::Release), release);
    for (const Document& document : documents)
        WriteDocument(*element.createElement(tag::Document), document);
}

} // namespace vo::updater
