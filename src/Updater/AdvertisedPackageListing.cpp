#include <Updater/AdvertisedPackageListing.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Download/VoDownloadPolicy.h>
#include <FileSystem/VoLocation.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/ListingTable.h>
#include <Updater/detail/documents/PlainListing.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/RemoteDocument.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <string_view>
#include <utility>

namespace vo::updater {

using namespace detail;

struct AdvertisedPackageListing::Private
{
    ListedFiles<AdvertisedFileListing> files;
    ListingTable<ChunkListing> chunks;
};

namespace {

VoXMLStreamLoader Rules()
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Package, Build<AdvertisedPackageListing>);
    loader.addGlobalRule(tag::File, Build<AdvertisedFileListing>);
    loader.addGlobalRule(tag::Chunk, Build<ChunkListing>);
    AdvertisedFileListing::AddDefinitions(loader);
    return loader;
}

VoUniquePtr<AdvertisedPackageListing> Require(VoUniquePtr<VoAbstractXMLStreamLoaderObject> loaded, const VoString& name)
{
    auto package = DynamicCast<AdvertisedPackageListing>(std::move(loaded));
    if (!package)
        FailLoading(name, "Package advert failed to load");
    return package;
}

} // namespace

AdvertisedPackageListing::AdvertisedPackageListing() = default;

AdvertisedPackageListing::AdvertisedPackageListing(const VoUUID& packageID, const VoUUID& versionID,
                                                   const VoString& name, const VoVersion& version)
    : AbstractPackageListing(packageID, versionID, name, version)
{
}

AdvertisedPackageListing::AdvertisedPackageListing(VoXMLStreamElementLoader& element)
    : AbstractPackageListing(element)
    , m_private(new Private)
{
    // The containers have no rules of their own; anything else without a rule is from a later format.
    element.processChildren([this](VoXMLStreamElementLoader& container) {
        const VoString name = container.name();
        if (name == tag::Files)
            LoadChildren<AdvertisedFileListing>(
                container, [this](AdvertisedFileListing&& file) { m_private->files.add(file); });
        else if (name == tag::Chunks)
            LoadChildren<ChunkListing>(container,
                                       [this](ChunkListing&& chunk) { m_private->chunks.add(std::move(chunk)); });
    });
}

VoUniquePtr<AdvertisedPackageListing> AdvertisedPackageListing::Made(PlainListing&& plain)
{
    auto package = VoUniquePtr<AdvertisedPackageListing>::Make(plain.packageID, plain.versionID, plain.name,
                                                               plain.version);
    package->m_private.reset(new Private{ListedFiles<AdvertisedFileListing>(std::move(plain.files)), {}});
    for (ChunkListing& chunk : plain.chunks)
        package->m_private->chunks.add(std::move(chunk));
    return package;
}

AdvertisedPackageListing::AdvertisedPackageListing(const AdvertisedPackageListing& other)
    : AbstractPackageListing(other)
    , m_private(Copy(other.m_private))
    , m_patches(other.m_patches)
{
}

AdvertisedPackageListing::AdvertisedPackageListing(AdvertisedPackageListing&& other) noexcept = default;

AdvertisedPackageListing& AdvertisedPackageListing::operator=(const AdvertisedPackageListing& other)
{
    return *this = AdvertisedPackageListing(other);
}

AdvertisedPackageListing& AdvertisedPackageListing::operator=(AdvertisedPackageListing&& other) noexcept = default;

AdvertisedPackageListing::~AdvertisedPackageListing() = default;

VoUniquePtr<AdvertisedPackageListing> AdvertisedPackageListing::Open(const VoFilePath& path)
{
    return Open(path, VoStopFlag(), VoDownloadPolicy());
}

VoUniquePtr<AdvertisedPackageListing> AdvertisedPackageListing::Open(const VoUrl& url)
{
    return Open(url, VoStopFlag());
}

VoUniquePtr<AdvertisedPackageListing> AdvertisedPackageListing::Open(const VoUrl& url, VoStopFlag stop)
{
    return Open(url, stop, VoDownloadPolicy());
}

VoUniquePtr<AdvertisedPackageListing> AdvertisedPackageListing::Open(const VoLocation& location, VoStopFlag stop, const VoDownloadPolicy& downloads)
{
    const DocumentFile document(location, stop, downloads);
    if (auto plain = ReadPlainListing(ListingKind::Advertised, document.path()))
        return Made(std::move(*plain));
    VoXMLStreamLoader loader = Rules();
    return Require(LoadDocument(loader, document.path(), document.name()), document.name());
}

VoUniquePtr<AdvertisedPackageListing> AdvertisedPackageListing::Parse(const VoString& bytes, const VoString& name)
{
    if (auto plain = ReadPlainListing(ListingKind::Advertised, std::string_view(bytes.toStdString())))
        return Made(std::move(*plain));
    VoXMLStreamLoader loader = Rules();
    return Require(ParseDocument(loader, bytes, name), name);
}

void AdvertisedPackageListing::findAttributes(const VoLocation& definition, const VoStopFlag& stop,
                                              const VoDownloadPolicy& downloads)
{
    FindAttributes(*this, definition, stop, downloads);
}

void AdvertisedPackageListing::add(const AdvertisedFileListing& file)
{
    detail::Write(m_private).files.add(file);
}

void AdvertisedPackageListing::add(const ChunkListing& chunk)
{
    detail::Write(m_private).chunks.add(chunk);
}

const VoDeque<AdvertisedFileListing>& AdvertisedPackageListing::files() const
{
    return Read(m_private).files.items();
}

const VoDeque<ChunkListing>& AdvertisedPackageListing::chunks() const
{
    return Read(m_private).chunks.items();
}

const AdvertisedFileListing* AdvertisedPackageListing::file(const VoUUID& fileID) const
{
    return Read(m_private).files.find(fileID);
}

VoDeque<VoUUID> AdvertisedPackageListing::fileIDs() const
{
    return Read(m_private).files.ids();
}

const ChunkListing* AdvertisedPackageListing::chunk(const VoUUID& chunkID) const
{
    return Read(m_private).chunks.find(chunkID);
}

const std::shared_ptr<const ReleasePatches>& AdvertisedPackageListing::patches() const noexcept
{
    return m_patches;
}

void AdvertisedPackageListing::setPatches(std::shared_ptr<const ReleasePatches> patches) noexcept
{
    m_patches = std::move(patches);
}

void AdvertisedPackageListing::write(const VoFilePath& path) const
{
    const Private& state = Read(m_private);
    if (!WritePlainListing(path, {*this, nullptr, state.files.table(), &state.chunks.items(), nullptr}))
        WriteDocument(path, tag::Package, *this);
}

XMLObject::Type AdvertisedPackageListing::objectType() const
{
    return Type::AdvertisedPackage;
}

void AdvertisedPackageListing::writeElements(VoXMLElementWriter& element) const
{
    WriteContainer(element, tag::Files, tag::File, files());
    WriteContainer(element, tag::Chunks, tag::Chunk, chunks());
}

std::vector<const AbstractFileListing*> AdvertisedPackageListing::listedFiles() const
{
    return Read(m_private).files.pointers<AbstractFileListing>();
}

} // namespace vo::updater
