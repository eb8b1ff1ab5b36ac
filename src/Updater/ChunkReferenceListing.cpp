#include <Updater/ChunkReferenceListing.h>

#include <Core/VoUUID.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>

namespace vo::updater {

using namespace detail;

struct ChunkReferenceListing::Private
{
    VoUUID chunkID = VoUUID("");
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    std::uint64_t index = 0;
};

ChunkReferenceListing::ChunkReferenceListing() = default;

ChunkReferenceListing::ChunkReferenceListing(const VoUUID& chunkID, std::uint64_t offset, std::uint64_t length,
                                             std::uint64_t index)
    : m_private(new Private{chunkID, offset, length, index})
{
}

ChunkReferenceListing::ChunkReferenceListing(VoXMLStreamElementLoader& element)
    : m_private(new Private{ReadAttribute<VoUUID>(element, attribute::ChunkID), ReadNumber(element, attribute::Offset),
                            ReadNumber(element, attribute::Length), ReadNumber(element, attribute::Index)})
{
}

ChunkReferenceListing::ChunkReferenceListing(const ChunkReferenceListing& other)
    : XMLObject(other)
    , m_private(Copy(other.m_private))
{
}

ChunkReferenceListing::ChunkReferenceListing(ChunkReferenceListing&& other) noexcept = default;

ChunkReferenceListing& ChunkReferenceListing::operator=(const ChunkReferenceListing& other)
{
    m_private = Copy(other.m_private);
    return *this;
}

ChunkReferenceListing& ChunkReferenceListing::operator=(ChunkReferenceListing&& other) noexcept = default;

ChunkReferenceListing::~ChunkReferenceListing() = default;

const VoUUID& ChunkReferenceListing::chunkID() const
{
    return Read(m_private).chunkID;
}

std::uint64_t ChunkReferenceListing::offset() const
{
    return Read(m_private).offset;
}

std::uint64_t ChunkReferenceListing::length() const
{
    return Read(m_private).length;
}

std::uint64_t ChunkReferenceListing::index() const
{
    return Read(m_private).index;
}

XMLObject::Type ChunkReferenceListing::objectType() const
{
    return Type::ChunkReference;
}

void ChunkReferenceListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::ChunkID, chunkID());
    WriteNumber(element, attribute::Offset, offset());
    WriteNumber(element, attribute::Length, length());
    WriteNumber(element, attribute::Index, index());
}

} // namespace vo::updater
