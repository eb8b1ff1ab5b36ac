#include <Updater/ReleaseAttributes.h>

#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

namespace vo::updater {

using namespace detail;

namespace {

VoFilePath ReadTarget(VoXMLStreamElementLoader& element)
{
    VoFilePath target = ReadAttribute<VoFilePath>(element, attribute::Target);
    RequireSafeTarget(target);
    return target;
}

void WriteTargets(VoXMLElementWriter& element, const char* name, const VoDeque<VoFilePath>& targets)
{
    for (const VoFilePath& target : targets)
        WriteAttribute(*element.createElement(name), attribute::Target, target);
}

} // namespace

// On Windows no object of the library would have it otherwise, for those who refer to it.
constexpr const char* ReleaseAttributes::FileName; // NOLINT(readability-redundant-declaration)

ReleaseAttributes::ReleaseAttributes() = default;

ReleaseAttributes::ReleaseAttributes(const VoUUID& package, const VoUUID& version)
    : packageID(package)
    , versionID(version)
{
}

ReleaseAttributes::ReleaseAttributes(VoXMLStreamElementLoader& element)
    : packageID(ReadAttribute<VoUUID>(element, attribute::PackageID))
    , versionID(ReadAttribute<VoUUID>(element, attribute::VersionID))
{
    element.processChildren([this](VoXMLStreamElementLoader& child) {
        const VoString name = child.name();
        if (name == tag::Executable)
            executables.pushBack(ReadTarget(child));
        else if (name == tag::Link)
            links.pushBack({ReadTarget(child), child.attribute(attribute::To)});
        else if (name == tag::Folder)
            folders.pushBack(ReadTarget(child));
    });
}

ReleaseAttributes::ReleaseAttributes(const ReleaseAttributes& other) = default;
ReleaseAttributes::ReleaseAttributes(ReleaseAttributes&& other) noexcept = default;
ReleaseAttributes& ReleaseAttributes::operator=(const ReleaseAttributes& other) = default;
ReleaseAttributes& ReleaseAttributes::operator=(ReleaseAttributes&& other) noexcept = default;
ReleaseAttributes::~ReleaseAttributes() = default;

ReleaseAttributes ReleaseAttributes::Parse(const VoString& bytes, const VoString& name)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Attributes, Build<ReleaseAttributes>);
    const auto attributes = DynamicCast<ReleaseAttributes>(ParseDocument(loader, bytes, name));
    if (!attributes)
        FailLoading(name, "Attributes failed to load");
    return std::move(*attributes);
}

VoString ReleaseAttributes::toDocument() const
{
    return DocumentText(tag::Attributes, *this);
}

bool ReleaseAttributes::isEmpty() const
{
    return executables.isEmpty() && links.isEmpty() && folders.isEmpty();
}

XMLObject::Type ReleaseAttributes::objectType() const
{
    return Type::ReleaseAttributes;
}

void ReleaseAttributes::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::PackageID, packageID);
    WriteAttribute(element, attribute::VersionID, versionID);
}

void ReleaseAttributes::writeElements(VoXMLElementWriter& element) const
{
    WriteTargets(element, tag::Executable, executables);
    for (const Link& link : links) {
        const auto child = element.createElement(tag::Link);
        WriteAttribute(*child, attribute::Target, link.target);
        child->writeAttribute(attribute::To, link.to);
    }
    WriteTargets(element, tag::Folder, folders);
}

} // namespace vo::updater
