#include <Updater/detail/files/SeenFiles.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/FileActions.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>

namespace vo::updater::detail {

namespace {

constexpr std::string_view Beginning = "vo-seen\n";
constexpr std::size_t NumbersOfStamp = 5;
constexpr std::size_t StampSize = NumbersOfStamp * sizeof(std::uint64_t);
constexpr std::size_t DigestSize = 32;

// What is changed after a file was read has no time before the newest that was seen by then, so that a file with an
// older one is sure. How much older leaves room for clocks that do not quite agree: where times are kept to less than a
// millisecond, as one that is no whole number of them shows, two ticks of a slow system clock; else two seconds, the
// coarsest that a volume in use keeps.
constexpr std::int64_t Millisecond = 1'000'000;
constexpr std::int64_t CoarseGrain = 2000 * Millisecond;
constexpr std::int64_t FineGrain = 20 * Millisecond;

std::int64_t GrainOf(std::int64_t time)
{
    return time % Millisecond == 0 ? CoarseGrain : FineGrain;
}

std::array<std::uint64_t, NumbersOfStamp> Numbers(const FileStamp& stamp)
{
    return {stamp.size, static_cast<std::uint64_t>(stamp.written), static_cast<std::uint64_t>(stamp.changed),
            stamp.file, stamp.device};
}

void Append(std::string& bytes, const FileStamp& stamp)
{
    for (std::uint64_t number : Numbers(stamp)) {
        for (std::size_t i = 0; i < sizeof(number); ++i, number >>= 8)
            bytes += static_cast<char>(number & 0xFF);
    }
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t position)
{
    std::uint64_t number = 0;
    for (std::size_t i = sizeof(number); i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[position + i]);
    return number;
}

FileStamp StampAt(std::string_view bytes, std::size_t position)
{
    const auto number = [&](std::size_t i) { return NumberAt(bytes, position + i * sizeof(std::uint64_t)); };
    return {number(0), static_cast<std::int64_t>(number(1)), static_cast<std::int64_t>(number(2)), number(3),
            number(4)};
}

std::string DigestBytes(std::string_view bytes)
{
    vo::detail::Sha3 hash;
    hash.add(bytes.data(), bytes.size());
    const VoChecksum digest = hash.finish();
    return std::string(vo::detail::Sha3::Bytes(digest));
}

// The stamps in what was kept for a listing with that stamp; none of another listing, and of damaged bytes.
std::string StampsIn(std::string_view bytes, const FileStamp& listing)
{
    constexpr std::size_t head = Beginning.size() + StampSize;
    if (bytes.size() < head + DigestSize || (bytes.size() - head - DigestSize) % StampSize != 0 ||
        bytes.substr(0, Beginning.size()) != Beginning || !(StampAt(bytes, Beginning.size()) == listing))
        return {};
    const std::string_view kept = bytes.substr(0, bytes.size() - DigestSize);
    const bool isWhole = DigestBytes(kept) == bytes.substr(kept.size());
    return std::string(isWhole ? kept.substr(head) : std::string_view());
}

// Of all clocks only that of the files' volume can be compared with their times: the newest of them tells how late it
// was at least. One from after the beginning was made by somebody else, perhaps when other files had been read.
std::optional<FileStamp> Newest(const SeenFiles::Stamps& stamps, std::int64_t begun)
{
    std::optional<FileStamp> newest;
    for (const auto& stamp : stamps) {
        if (stamp && stamp->changed <= begun && (!newest || stamp->changed > newest->changed))
            newest = stamp;
    }
    return newest;
}

// What is to be kept; nothing where no file is sure.
std::string BytesOf(const VoFilePath& listing, const SeenFiles::Stamps& stamps, std::int64_t begun)
{
    const std::optional<FileStamp> newest = Newest(stamps, begun);
    const std::optional<FileStamp> listed = StampOf(listing);
    if (!newest || !listed)
        return {};
    std::string bytes(Beginning);
    bytes.reserve(Beginning.size() + (stamps.size() + 1) * StampSize + DigestSize);
    Append(bytes, *listed);
    const std::int64_t surelyBefore = newest->changed - GrainOf(newest->changed);
    bool isAnySure = false;
    for (const auto& stamp : stamps) {
        const bool isSure = stamp && stamp->changed < surelyBefore && stamp->device == newest->device;
        Append(bytes, isSure ? *stamp : FileStamp());
        isAnySure = isAnySure || isSure;
    }
    return isAnySure ? bytes + DigestBytes(bytes) : std::string();
}

} // namespace

VoFilePath SeenFiles::PlaceOf(const VoFilePath& listing)
{
    return VoFilePath::CreateUnchecked(listing.path().substring(0, listing.path().size() - 4).toString() + ".seen");
}

SeenFiles SeenFiles::At(const VoFilePath& place, const VoFilePath& listing)
{
    SeenFiles seen;
    try {
        const std::optional<FileStamp> stamp = StampOf(listing);
        if (!stamp || KindOf(place) != FileKind::File)
            return seen;
        seen.m_bytes = StampsIn(ReadDocument(place).toStdString(), *stamp);
    } catch (...) {
        Log().diagnostic("What was seen of files is not used: " + CurrentExceptionText());
    }
    return seen;
}

void SeenFiles::Keep(const VoFilePath& place, const VoFilePath& listing, const Stamps& stamps, std::int64_t begun)
{
    try {
        const std::string bytes = BytesOf(listing, stamps, begun);
        if (bytes.empty())
            Forget(place);
        else
            WriteBytes(place, VoString(bytes));
    } catch (...) {
        Log().diagnostic("What was seen of files is not kept: " + CurrentExceptionText());
    }
}

void SeenFiles::Forget(const VoFilePath& place)
{
    if (KindOf(place) != FileKind::None)
        EraseFile(place);
}

std::int64_t SeenFiles::Now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

bool SeenFiles::isUnchanged(std::size_t number, const std::optional<FileStamp>& stamp) const
{
    return stamp && number < m_bytes.size() / StampSize && StampAt(m_bytes, number * StampSize) == *stamp;
}

} // namespace vo::updater::detail
