#include <Updater/AdvertisedFileListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>

namespace vo::updater {

using namespace detail;

struct AdvertisedFileListing::Private
{
    VoFilePath target;
    VoDeque<ChunkReferenceListing> chunks; // sorted; index i at position i
};

namespace {

struct ChunkComparator
{
    bool operator()(const ChunkReferenceListing& a, const ChunkReferenceListing& b) const
    {
        return a.index() < b.index();
    }
};

VoDeque<ChunkReferenceListing> Ordered(VoDeque<ChunkReferenceListing> chunks)
{
    if (!std::is_sorted(chunks.begin(), chunks.end(), ChunkComparator()))
        std::stable_sort(chunks.begin(), chunks.end(), ChunkComparator());
    std::uint64_t expected = 0;
    for (const ChunkReferenceListing& chunk : chunks) {
        if (chunk.index() != expected++)
            throw VoInvalidParameterException("Invalid chunk indexes");
    }
    return chunks;
}

} // namespace

AdvertisedFileListing::AdvertisedFileListing() = default;

AdvertisedFileListing::AdvertisedFileListing(const VoFilePath& target, const VoDeque<ChunkReferenceListing>& chunks,
                                             const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size)
    : AbstractFileListing(id, checksum, size)
    , m_private(new Private{target, Ordered(chunks)})
{
}

AdvertisedFileListing::AdvertisedFileListing(VoXMLStreamElementLoader& element)
    : AbstractFileListing(element)
    , m_private(new Private{ReadAttribute<VoFilePath>(element, attribute::Target), {}})
{
    VoDeque<ChunkReferenceListing> chunks;
    LoadChildren<ChunkReferenceListing>(
        element, [&chunks](ChunkReferenceListing&& chunk) { chunks.pushBack(std::move(chunk)); });
    m_private->chunks = Ordered(std::move(chunks));
}

AdvertisedFileListing::AdvertisedFileListing(const AdvertisedFileListing& other)
    : AbstractFileListing(other)
    , m_private(Copy(other.m_private))
{
}

AdvertisedFileListing::AdvertisedFileListing(AdvertisedFileListing&& other) noexcept = default;

AdvertisedFileListing& AdvertisedFileListing::operator=(const AdvertisedFileListing& other)
{
    return *this = AdvertisedFileListing(other);
}

AdvertisedFileListing& AdvertisedFileListing::operator=(AdvertisedFileListing&& other) noexcept = default;

AdvertisedFileListing::~AdvertisedFileListing() = default;

void AdvertisedFileListing::AddDefinitions(VoXMLStreamLoader& loader)
{
    loader.addGlobalRule(tag::ChunkReference, Build<ChunkReferenceListing>);
}

const VoFilePath& AdvertisedFileListing::target() const
{
    return Read(m_private).target;
}

const VoDeque<ChunkReferenceListing>& AdvertisedFileListing::chunks() const
{
    return Read(m_private).chunks;
}

XMLObject::Type AdvertisedFileListing::objectType() const
{
    return Type::AdvertisedFile;
}

void AdvertisedFileListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Target, target());
    AbstractFileListing::writeAttributes(element);
}

void AdvertisedFileListing::writeElements(VoXMLElementWriter& element) const
{
    for (const ChunkReferenceListing& chunk : chunks())
        WriteChild(element, tag::ChunkReference, chunk);
}

} // namespace vo::updater
