#include <Updater/AdvertisedPackages.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadPolicy.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/RemoteDocument.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>

namespace vo::updater {

using namespace detail;

struct AdvertisedPackages::Declaration::Private
{
    VoFilePath path;
};

struct AdvertisedPackages::Private
{
    VoDeque<Declaration> declarations;
};

namespace {

template <typename Predicate>
void RemoveIf(VoDeque<AdvertisedPackages::Declaration>& declarations, Predicate predicate)
{
    declarations.erase(std::remove_if(declarations.begin(), declarations.end(), predicate), declarations.end());
}

VoXMLStreamLoader Rules()
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Packages, Build<AdvertisedPackages>);
    // By its path, because a definition's root has the same name: such a document must count as no declarations at all.
    loader.addSpecificRule(VoXMLPath({tag::Packages, tag::Package}), Build<AdvertisedPackages::Declaration>);
    return loader;
}

} // namespace

AdvertisedPackages::Declaration::Declaration() = default;

AdvertisedPackages::Declaration::Declaration(const AbstractPackage& package, const VoFilePath& path)
    : AbstractPackage(package)
    , m_private(new Private{path})
{
}

AdvertisedPackages::Declaration::Declaration(VoXMLStreamElementLoader& element)
    : AbstractPackage(element)
    , m_private(new Private{ReadAttribute<VoFilePath>(element, attribute::Path)})
{
}

AdvertisedPackages::Declaration::Declaration(const Declaration& other)
    : AbstractPackage(other)
    , m_private(Copy(other.m_private))
{
}

AdvertisedPackages::Declaration::Declaration(Declaration&& other) noexcept = default;

AdvertisedPackages::Declaration& AdvertisedPackages::Declaration::operator=(const Declaration& other)
{
    return *this = Declaration(other);
}

AdvertisedPackages::Declaration& AdvertisedPackages::Declaration::operator=(Declaration&& other) noexcept = default;

AdvertisedPackages::Declaration::~Declaration() = default;

const VoFilePath& AdvertisedPackages::Declaration::path() const
{
    return Read(m_private).path;
}

VoLocation AdvertisedPackages::Declaration::definition(const VoLocation& declarations) const
{
    RequireSafeDefinitionPath(path());
    return declarations.beside(path());
}

XMLObject::Type AdvertisedPackages::Declaration::objectType() const
{
    return Type::Declaration;
}

void AdvertisedPackages::Declaration::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Path, path());
    AbstractPackage::writeAttributes(element);
}

AdvertisedPackages::AdvertisedPackages() = default;

AdvertisedPackages::AdvertisedPackages(VoXMLStreamElementLoader& element)
    : m_private(new Private)
{
    LoadChildren<Declaration>(
        element, [this](Declaration&& declaration) { m_private->declarations.pushBack(std::move(declaration)); });
}

AdvertisedPackages::AdvertisedPackages(const AdvertisedPackages& other)
    : XMLObject(other)
    , m_private(Copy(other.m_private))
{
}

AdvertisedPackages::AdvertisedPackages(AdvertisedPackages&& other) noexcept = default;

AdvertisedPackages& AdvertisedPackages::operator=(const AdvertisedPackages& other)
{
    m_private = Copy(other.m_private);
    return *this;
}

AdvertisedPackages& AdvertisedPackages::operator=(AdvertisedPackages&& other) noexcept = default;

AdvertisedPackages::~AdvertisedPackages() = default;

VoUniquePtr<AdvertisedPackages> AdvertisedPackages::Open(const VoFilePath& path)
{
    return Open(path, VoStopFlag(), VoDownloadPolicy());
}

VoUniquePtr<AdvertisedPackages> AdvertisedPackages::Open(const VoUrl& url)
{
    return Open(url, VoStopFlag());
}

VoUniquePtr<AdvertisedPackages> AdvertisedPackages::Open(const VoUrl& url, VoStopFlag stop)
{
    return Open(url, stop, VoDownloadPolicy());
}

VoUniquePtr<AdvertisedPackages> AdvertisedPackages::Open(const VoLocation& location, VoStopFlag stop, const VoDownloadPolicy& downloads)
{
    const DocumentFile document(location, stop, downloads);
    VoXMLStreamLoader loader = Rules();
    return DynamicCast<AdvertisedPackages>(LoadDocument(loader, document.path(), document.name()));
}

VoUniquePtr<AdvertisedPackages> AdvertisedPackages::Parse(const VoString& bytes, const VoString& name)
{
    VoXMLStreamLoader loader = Rules();
    return DynamicCast<AdvertisedPackages>(ParseDocument(loader, bytes, name));
}

void AdvertisedPackages::add(const AdvertisedPackageListing& package, const VoFilePath& path)
{
    Declaration declaration(package, path);
    VoDeque<Declaration>& declarations = detail::Write(m_private).declarations;
    RemoveIf(declarations, [&package](const Declaration& old) {
        return old.packageID() == package.packageID() && old.versionID() == package.versionID();
    });
    declarations.pushBack(std::move(declaration));
}

void AdvertisedPackages::remove(const VoUUID& packageID, const VoFilePath& path)
{
    // Copies, because the arguments may belong to one of the declarations that move about.
    RemoveIf(detail::Write(m_private).declarations, [id = packageID, path = path](const Declaration& old) {
        return old.packageID() == id && old.path() == path;
    });
}

const VoDeque<AdvertisedPackages::Declaration>& AdvertisedPackages::declarations() const
{
    return Read(m_private).declarations;
}

const AdvertisedPackages::Declaration& AdvertisedPackages::newestPackage(const VoUUID& packageID) const
{
    const Declaration* newest = nullptr;
    for (const Declaration& declaration : declarations()) {
        if (declaration.packageID() == packageID && (!newest || declaration.version() > newest->version()))
            newest = &declaration;
    }
    if (!newest)
        throw VoNotFoundException(packageID);
    return *newest;
}

const AdvertisedPackages::Declaration& AdvertisedPackages::package(const VoUUID& packageID,
                                                                   const VoUUID& versionID) const
{
    for (const Declaration& declaration : declarations()) {
        if (declaration.packageID() == packageID && declaration.versionID() == versionID)
            return declaration;
    }
    throw VoNotFoundException(versionID);
}

void AdvertisedPackages::write(const VoFilePath& path) const
{
    WriteDocument(path, tag::Packages, *this);
}

XMLObject::Type AdvertisedPackages::objectType() const
{
    return Type::AdvertisedPackages;
}

void AdvertisedPackages::writeElements(VoXMLElementWriter& element) const
{
    for (const Declaration& declaration : declarations())
        WriteChild(element, tag::Package, declaration);
}

} // namespace vo::updater
