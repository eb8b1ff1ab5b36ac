#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Documents/detail/ArchiveFile.h>
#include <Documents/detail/ZipBytes.h>
#include <Documents/detail/ZipDirectory.h>
#include <FileSystem/VoFilePath.h>

#include <algorithm>
#include <optional>

namespace vo::detail {

namespace {

constexpr std::size_t LongestComment = 0xFFFF;
constexpr std::size_t FarTail = std::size_t{1} << 20; // where an end record is looked for only to tell what is wrong

/// The end record with its numbers widened.
struct EndRecord
{
    std::uint64_t position = 0; // of the first record that follows the directory
    std::uint64_t disk = 0;
    std::uint64_t directoryDisk = 0;
    std::uint64_t countOnDisk = 0;
    std::uint64_t count = 0;
    std::uint64_t directorySize = 0;
    std::uint64_t directoryOffset = 0;
};

/// What stands at the end of an archive: the directory, the 64-bit record and its locator where there is one, the
/// classic record, its comment. None of the positions in these records is believed: the classic record is where its
/// comment ends with the file, everything else lies directly before what follows it, and the numbers have to agree with
/// that.
class EndFinder
{
public:
    EndFinder(ArchiveFile& file, const VoFilePath& path)
        : m_file(file)
        , m_path(path)
        , m_size(file.size())
    {
    }

    ZipEnd find()
    {
        const std::string tail = bytesAt(m_size - tailSize(ZipEndSize + LongestComment));
        const std::size_t at = recordIn(tail);
        if (at == std::string::npos)
            refuseWithoutRecord();
        EndRecord record = classicRecord(tail, at);
        const bool hasLarge = widen(record);
        if (record.disk != 0 || record.directoryDisk != 0 || record.countOnDisk != record.count)
            refuse("Zip archive of several volumes");
        if (record.directorySize > record.position || record.directoryOffset > record.position - record.directorySize)
            refuse("Zip archive is damaged");
        ZipEnd end;
        end.count = record.count;
        // Old programs leave the count at its mark for any larger number, and write no 64-bit record.
        end.countIsKnown = hasLarge || record.count != ZipSeeLargeCount;
        // By its size, not by its offset: those of an archive behind other bytes are too small by the length of these.
        end.directory = record.position - record.directorySize;
        end.directorySize = record.directorySize;
        end.prefix = end.directory - record.directoryOffset;
        if (end.count == 0 && end.prefix != 0) // everything that is there would go unnoticed
            refuse("Zip archive is damaged");
        return end;
    }

private:
    [[noreturn]] void refuse(const char* reason) const { throw VoInvalidPathFileException(reason, m_path); }

    std::size_t tailSize(std::size_t most) const
    {
        return static_cast<std::size_t>(std::min<std::uint64_t>(m_size, most));
    }

    // The bytes from a position to the end, or as many as asked for.
    std::string bytesAt(std::uint64_t position, std::size_t most = FarTail)
    {
        std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(m_size - position, most)), '\0');
        m_file.seek(position, std::ios_base::beg);
        if (m_file.read(bytes.data(), bytes.size()) != bytes.size())
            refuse("Zip archive cannot be read");
        return bytes;
    }

    // The last record whose comment ends with the file.
    static std::size_t recordIn(const std::string& tail)
    {
        for (std::size_t at = lastMark(tail, tail.size()); at != std::string::npos; at = lastMark(tail, at))
            if (at + ZipEndSize + ZipU16(tail, at + ZipEndSize - 2) == tail.size())
                return at;
        return std::string::npos;
    }

    // The last mark before a position that has room for its record.
    static std::size_t lastMark(const std::string& tail, std::size_t before)
    {
        if (tail.size() < ZipEndSize || before == 0)
            return std::string::npos;
        return tail.rfind(ZipEndMark, std::min(before - 1, tail.size() - ZipEndSize));
    }

    [[noreturn]] void refuseWithoutRecord()
    {
        const std::string tail = bytesAt(m_size - tailSize(FarTail));
        const std::size_t at = lastMark(tail, tail.size());
        if (at != std::string::npos && at + ZipEndSize + ZipU16(tail, at + ZipEndSize - 2) < tail.size())
            refuse("Data behind the end of zip archive");
        const std::string head = bytesAt(0, ZipLocalHeaderMark.size());
        refuse(at != std::string::npos || head == ZipLocalHeaderMark || head == ZipEndMark
                   ? "Zip archive is not complete"
                   : "Not a zip archive");
    }

    EndRecord classicRecord(const std::string& tail, std::size_t at) const
    {
        EndRecord record;
        record.position = m_size - tail.size() + at;
        record.disk = ZipU16(tail, at + 4);
        record.directoryDisk = ZipU16(tail, at + 6);
        record.countOnDisk = ZipU16(tail, at + 8);
        record.count = ZipU16(tail, at + 10);
        record.directorySize = ZipU32(tail, at + 12);
        record.directoryOffset = ZipU32(tail, at + 16);
        return record;
    }

    // Takes what is marked from the 64-bit record, if there is one. What is not marked must be the same in both, else
    // one reader would see another archive than the next.
    bool widen(EndRecord& record)
    {
        const std::optional<EndRecord> large = largeRecord(record.position);
        if (!large)
            return false;
        const auto take = [this](std::uint64_t& value, std::uint64_t wide, std::uint64_t mark) {
            if (value != mark && value != wide)
                refuse("Zip archive is damaged");
            value = wide;
        };
        record.position = large->position;
        take(record.disk, large->disk, ZipSeeLargeCount);
        take(record.directoryDisk, large->directoryDisk, ZipSeeLargeCount);
        take(record.countOnDisk, large->countOnDisk, ZipSeeLargeCount);
        take(record.count, large->count, ZipSeeLargeCount);
        take(record.directorySize, large->directorySize, ZipSeeLarge);
        take(record.directoryOffset, large->directoryOffset, ZipSeeLarge);
        return true;
    }

    std::optional<EndRecord> largeRecord(std::uint64_t end)
    {
        if (end < ZipLargeEndLocatorSize + ZipLargeEndSize)
            return std::nullopt;
        const std::uint64_t locator = end - ZipLargeEndLocatorSize;
        const std::string bytes = bytesAt(locator, ZipLargeEndLocatorSize);
        if (bytes.compare(0, ZipLargeEndLocatorMark.size(), ZipLargeEndLocatorMark) != 0)
            return std::nullopt;
        // The locator does not know of bytes before the archive; then the record is looked for where it usually is.
        for (const std::uint64_t position : {ZipU64(bytes, 8), locator - ZipLargeEndSize})
            if (const auto record = largeRecordAt(position, locator))
                return record;
        return std::nullopt;
    }

    std::optional<EndRecord> largeRecordAt(std::uint64_t position, std::uint64_t locator)
    {
        if (position > locator - ZipLargeEndSize)
            return std::nullopt;
        const std::string bytes = bytesAt(position, ZipLargeEndSize);
        constexpr std::size_t beforeSize = 12; // the mark and the size itself do not count in the size
        if (bytes.compare(0, ZipLargeEndMark.size(), ZipLargeEndMark) != 0 ||
            ZipU64(bytes, 4) != locator - position - beforeSize)
            return std::nullopt;
        EndRecord record;
        record.position = position;
        record.disk = ZipU32(bytes, 16);
        record.directoryDisk = ZipU32(bytes, 20);
        record.countOnDisk = ZipU64(bytes, 24);
        record.count = ZipU64(bytes, 32);
        record.directorySize = ZipU64(bytes, 40);
        record.directoryOffset = ZipU64(bytes, 48);
        return record;
    }

    ArchiveFile& m_file;
    const VoFilePath& m_path;
    std::uint64_t m_size;
};

} // namespace

ZipEnd FindZipEnd(ArchiveFile& file, const VoFilePath& path)
{
    return EndFinder(file, path).find();
}

} // namespace vo::detail
