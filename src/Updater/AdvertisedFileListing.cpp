#include <Updater/AdvertisedFileListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>
#include <string>
#include <utility>

namespace vo::updater {

using namespace detail;

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
    : AbstractFileListing(id, checksum, size, target)
{
    addPieces(chunks);
}

AdvertisedFileListing::AdvertisedFileListing(VoXMLStreamElementLoader& element)
    : AbstractFileListing(element, attribute::Target)
{
    VoDeque<ChunkReferenceListing> chunks;
    LoadChildren<ChunkReferenceListing>(
        element, [&chunks](ChunkReferenceListing&& chunk) { chunks.pushBack(std::move(chunk)); });
    addPieces(std::move(chunks));
}

AdvertisedFileListing::AdvertisedFileListing(const FileTable& table, std::uint32_t number) noexcept
    : AbstractFileListing(table, number)
{
}

AdvertisedFileListing::AdvertisedFileListing(const AdvertisedFileListing& other) = default;
AdvertisedFileListing::AdvertisedFileListing(AdvertisedFileListing&& other) noexcept = default;
AdvertisedFileListing& AdvertisedFileListing::operator=(const AdvertisedFileListing& other) = default;
AdvertisedFileListing& AdvertisedFileListing::operator=(AdvertisedFileListing&& other) noexcept = default;
AdvertisedFileListing::~AdvertisedFileListing() = default;

void AdvertisedFileListing::addPieces(VoDeque<ChunkReferenceListing> pieces)
{
    for (const ChunkReferenceListing& piece : Ordered(std::move(pieces)))
        addPiece(piece.chunkID(), piece.offset(), piece.length());
}

void AdvertisedFileListing::AddDefinitions(VoXMLStreamLoader& loader)
{
    loader.addGlobalRule(tag::ChunkReference, Build<ChunkReferenceListing>);
}

VoFilePath AdvertisedFileListing::target() const
{
    return VoFilePath::CreateUnchecked(VoString(std::string(pathText())));
}

VoDeque<ChunkReferenceListing> AdvertisedFileListing::chunks() const
{
    const ListedFile file(*this);
    VoDeque<ChunkReferenceListing> chunks;
    for (const FileTable::Piece& piece : file.pieces())
        chunks.pushBack(ChunkReferenceListing(VoUUID(VoString(std::string(file.table->chunkIDs()[piece.chunk]))),
                                              piece.offset, piece.length, chunks.size()));
    return chunks;
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
