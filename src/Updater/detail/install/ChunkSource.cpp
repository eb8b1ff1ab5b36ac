#include <Updater/detail/install/ChunkSource.h>

#include <Core/VoFileException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/install/ChunkReader.h>
#include <Updater/detail/install/EventReport.h>

#include <algorithm>
#include <utility>

namespace vo::updater::detail {

namespace {

// What a chunk may hold beyond the bytes that the advert refers to: a builder can leave pieces in it that no file uses.
constexpr std::uint64_t ChunkSlack = std::uint64_t{64} << 20;

std::uint64_t LargestExtent(const AdvertisedPackageListing& package)
{
    std::uint64_t largest = 0;
    for (const AdvertisedFileListing& file : package.files()) {
        for (const ChunkReferenceListing& piece : file.chunks())
            largest = std::max(largest, piece.offset() + piece.length());
    }
    return largest;
}

bool IsPieceInside(const ChunkReferenceListing& piece, const VoByteArray& bytes)
{
    return piece.offset() <= bytes.size() && piece.length() <= bytes.size() - piece.offset();
}

} // namespace

ChunkSource::ChunkSource(const AdvertisedPackageListing& advert, const StagingDirectory& staging,
                         std::size_t cacheLimit, const EventReport& events)
    : m_advert(advert)
    , m_staging(staging)
    , m_events(events)
    , m_cache(cacheLimit)
{
}

ChunkSource::~ChunkSource() = default;

const StagingDirectory& ChunkSource::staging() const
{
    return m_staging;
}

std::size_t ChunkSource::cacheLimit() const
{
    return m_cache.limit();
}

VoDeque<ChunkListing> ChunkSource::missing(const VoDeque<ChunkListing>& chunks, const VoStopFlag& stop) const
{
    VoDeque<ChunkListing> result;
    for (const ChunkListing& chunk : chunks) {
        stop.throwIfStopped();
        if (!m_staging.holds(chunk))
            result.pushBack(chunk);
    }
    return result;
}

void ChunkSource::expect(const VoUUID& id, std::uint64_t uses)
{
    m_cache.expect(id, uses);
}

void ChunkSource::readAhead(std::vector<VoUUID> order)
{
    m_reader = std::make_unique<ChunkReader>(m_staging, limit(), std::move(order));
}

void ChunkSource::endReading()
{
    m_reader.reset();
}

const VoByteArray& ChunkSource::bytes(const VoUUID& id)
{
    if (const VoByteArray* cached = m_cache.find(id))
        return *cached;
    if (!m_advert.chunk(id))
        throw VoNullPointerException("Failed to find required chunk");
    try {
        return m_cache.insert(id, m_reader ? m_reader->take(id) : m_staging.read(id, limit()));
    } catch (const VoFileNotFoundException&) {
        throw VoNullPointerException("Failed to find required chunk");
    }
}

std::uint64_t ChunkSource::limit()
{
    if (m_limit == 0)
        m_limit = std::max(LargestExtent(m_advert), ChunkSlack);
    return m_limit;
}

void ChunkSource::build(const AdvertisedFileListing& file, const VoFilePath& place, Durability durability,
                        Digest digest, const VoStopFlag& stop)
{
    FileInstaller built(place, durability, digest);
    bool isSound = true;
    for (const ChunkReferenceListing& piece : file.chunks()) {
        stop.throwIfStopped();
        isSound = isSound && writePiece(piece, built);
        m_cache.release(piece.chunkID());
    }
    if (!isSound || !built.finish(file.checksum(), static_cast<std::uint64_t>(file.size().bytes())))
        throwDamaged(file, place);
}

bool ChunkSource::writePiece(const ChunkReferenceListing& piece, FileInstaller& built)
{
    const VoByteArray* chunk = nullptr;
    try {
        chunk = &bytes(piece.chunkID());
    } catch (const VoInvalidConversionException& failure) {
        m_events.warning(failure.message());
        return false;
    } catch (const VoOverflowException& failure) {
        m_events.warning(failure.message());
        return false;
    }
    if (!IsPieceInside(piece, *chunk)) {
        m_events.warning("Piece lies outside of its chunk: " + m_staging.chunkPath(piece.chunkID()).path());
        return false;
    }
    built.write(chunk->cdata() + piece.offset(), static_cast<std::size_t>(piece.length()));
    return true;
}

void ChunkSource::throwDamaged(const AdvertisedFileListing& file, const VoFilePath& place) const
{
    VoUUID last("");
    for (const ChunkReferenceListing& piece : file.chunks()) {
        if (piece.chunkID() == last)
            continue;
        last = piece.chunkID();
        const ChunkListing* chunk = m_advert.chunk(last);
        if (chunk && !m_staging.holds(*chunk))
            m_events.warning("Chunk checksum mismatch: " + m_staging.chunkPath(last).path());
    }
    throw VoDamagedContentException("File checksum does not match for: " + place.path());
}

} // namespace vo::updater::detail
