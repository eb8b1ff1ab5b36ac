#include <Updater/InstalledPackageListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/PlainListing.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <utility>

namespace vo::updater {

using namespace detail;

struct InstalledPackageListing::Private
{
    VoDirectoryPath installationDirectory;
    ListedFiles<InstalledFileListing> files;
    VoDeque<VoDirectoryPath> directories;
};

namespace {

VoDeque<VoDirectoryPath> LoadDirectories(VoXMLStreamElementLoader& container)
{
    VoDeque<VoDirectoryPath> directories;
    container.processChildren([&directories](VoXMLStreamElementLoader& child) {
        if (child.name() == tag::Path)
            directories.pushBack(VoDirectoryPath::Deserialize(child.text()));
    });
    return directories;
}

} // namespace

InstalledPackageListing::InstalledPackageListing() = default;

InstalledPackageListing::InstalledPackageListing(const AbstractPackageListing& package,
                                                 const VoDirectoryPath& installationDirectory)
    : AbstractPackageListing(package.packageID(), package.versionID(), package.name(), package.version())
    , m_private(new Private{installationDirectory, {}, {}})
{
}

InstalledPackageListing::InstalledPackageListing(VoXMLStreamElementLoader& element)
    : AbstractPackageListing(element)
    , m_private(new Private{ReadAttribute<VoDirectoryPath>(element, attribute::Directory), {}, {}})
{
    element.processChildren([this](VoXMLStreamElementLoader& container) {
        const VoString name = container.name();
        if (name == tag::Files)
            LoadChildren<InstalledFileListing>(
                container, [this](InstalledFileListing&& file) { m_private->files.add(file); });
        else if (name == tag::Directories)
            m_private->directories.append(LoadDirectories(container));
    });
}

VoUniquePtr<InstalledPackageListing> InstalledPackageListing::Made(PlainListing&& plain)
{
    const AdvertisedPackageListing identity(plain.packageID, plain.versionID, plain.name, plain.version);
    auto package = VoUniquePtr<InstalledPackageListing>::Make(identity, plain.directory);
    package->m_private.reset(new Private{plain.directory, ListedFiles<InstalledFileListing>(std::move(plain.files)),
                                         std::move(plain.directories)});
    return package;
}

InstalledPackageListing::InstalledPackageListing(const InstalledPackageListing& other)
    : AbstractPackageListing(other)
    , m_private(Copy(other.m_private))
{
}

InstalledPackageListing::InstalledPackageListing(InstalledPackageListing&& other) noexcept = default;

InstalledPackageListing& InstalledPackageListing::operator=(const InstalledPackageListing& other)
{
    return *this = InstalledPackageListing(other);
}

InstalledPackageListing& InstalledPackageListing::operator=(InstalledPackageListing&& other) noexcept = default;

InstalledPackageListing::~InstalledPackageListing() = default;

VoUniquePtr<InstalledPackageListing> InstalledPackageListing::Open(const VoFilePath& path)
{
    if (auto plain = ReadPlainListing(ListingKind::Installed, path))
        return Made(std::move(*plain));
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Package, Build<InstalledPackageListing>);
    loader.addGlobalRule(tag::File, Build<InstalledFileListing>);

    auto package = DynamicCast<InstalledPackageListing>(LoadDocument(loader, path, VoString()));
    if (!package)
        FailLoading(path.path(), "Installed package listing failed to load");
    return package;
}

void InstalledPackageListing::add(const InstalledFileListing& file)
{
    detail::Write(m_private).files.add(file);
}

void InstalledPackageListing::addInstalled(const AdvertisedFileListing& file, const VoFilePath& place)
{
    detail::Write(m_private).files.addAt(place.path().toStdString(), ListedFile(file));
}

void InstalledPackageListing::add(const VoFilePath& path, const VoUUID& id, const VoChecksum& checksum,
                                  const VoDownloadSize& size)
{
    add(InstalledFileListing(path, id, checksum, size));
}

void InstalledPackageListing::add(const VoDirectoryPath& directory)
{
    detail::Write(m_private).directories.pushBack(directory);
}

const VoDirectoryPath& InstalledPackageListing::installationDirectory() const
{
    return Read(m_private).installationDirectory;
}

const VoDeque<InstalledFileListing>& InstalledPackageListing::files() const
{
    return Read(m_private).files.items();
}

const VoDeque<VoDirectoryPath>& InstalledPackageListing::directories() const
{
    return Read(m_private).directories;
}

const InstalledFileListing* InstalledPackageListing::file(const VoUUID& fileID) const
{
    return Read(m_private).files.find(fileID);
}

VoDeque<VoUUID> InstalledPackageListing::fileIDs() const
{
    return Read(m_private).files.ids();
}

void InstalledPackageListing::write(const VoFilePath& path) const
{
    const Private& state = Read(m_private);
    if (!WritePlainListing(
            path, {*this, &state.installationDirectory, state.files.table(), nullptr, &state.directories}))
        WriteDocument(path, tag::Package, *this);
}

XMLObject::Type InstalledPackageListing::objectType() const
{
    return Type::InstalledPackage;
}

void InstalledPackageListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Directory, installationDirectory());
    AbstractPackageListing::writeAttributes(element);
}

void InstalledPackageListing::writeElements(VoXMLElementWriter& element) const
{
    WriteContainer(element, tag::Files, tag::File, files());
    const auto container = element.createElement(tag::Directories);
    for (const VoDirectoryPath& directory : directories())
        container->createElement(tag::Path)->writeText(VoDirectoryPath::Serialize(directory));
}

std::vector<const AbstractFileListing*> InstalledPackageListing::listedFiles() const
{
    return Read(m_private).files.pointers<AbstractFileListing>();
}

} // namespace vo::updater
