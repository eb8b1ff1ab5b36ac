#include <Updater/ChunkListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>

namespace vo::updater {

using namespace detail;

struct ChunkListing::Private
{
    VoUUID id = VoUUID("");
    VoChecksum checksum;
    VoDownloadSize size = VoDownloadSize(0);
    VoFilePath path;
};

ChunkListing::ChunkListing() = default;

ChunkListing::ChunkListing(const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size,
                           const VoFilePath& path)
    : m_private(new Private{id, checksum, size, path})
{
}

ChunkListing::ChunkListing(VoXMLStreamElementLoader& element)
    : m_private(new Private{
          ReadAttribute<VoUUID>(element, attribute::Id), ReadAttribute<VoChecksum>(element, attribute::Checksum),
          ReadAttribute<VoDownloadSize>(element, attribute::Size), ReadAttribute<VoFilePath>(element, attribute::Path)})
{
}

ChunkListing::ChunkListing(const ChunkListing& other)
    : XMLObject(other)
    , m_private(Copy(other.m_private))
{
}

ChunkListing::ChunkListing(ChunkListing&& other) noexcept = default;

ChunkListing& ChunkListing::operator=(const ChunkListing& other)
{
    m_private = Copy(other.m_private);
    return *this;
}

ChunkListing& ChunkListing::operator=(ChunkListing&& other) noexcept = default;

ChunkListing::~ChunkListing() = default;

const VoUUID& ChunkListing::id() const
{
    return Read(m_private).id;
}

const VoChecksum& ChunkListing::checksum() const
{
    return Read(m_private).checksum;
}

const VoDownloadSize& ChunkListing::size() const
{
    return Read(m_private).size;
}

const VoFilePath& ChunkListing::path() const
{
    return Read(m_private).path;
}

XMLObject::Type ChunkListing::objectType() const
{
    return Type::Chunk;
}

void ChunkListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Id, id());
    WriteAttribute(element, attribute::Checksum, checksum());
    WriteAttribute(element, attribute::Size, size());
    WriteAttribute(element, attribute::Path, path());
}

} // namespace vo::updater
