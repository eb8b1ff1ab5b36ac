#include <Documents/detail/ZipDirectory.h>

#include <Documents/detail/ArchiveFile.h>
#include <Documents/detail/ZipBytes.h>

#include <algorithm>
#include <numeric>

namespace vo::detail {

namespace {

constexpr std::uint16_t FlagEncrypted = 1U << 0;
constexpr std::uint16_t MethodStored = 0;
constexpr std::uint16_t MethodDeflated = 8;

// The lowest byte of the attributes is in the terms of DOS from whichever system the entry comes; programs of Unix have
// their mode in the two highest.
constexpr std::uint32_t DosFolder = 0x10;
constexpr std::uint32_t UnixKind = 0xF0000000;
constexpr std::uint32_t UnixFolder = 0x40000000;
constexpr std::uint16_t FromUnix = 3;
constexpr std::uint16_t FromDarwin = 19;

bool IsFolder(std::uint32_t attributes, std::uint16_t madeBy)
{
    const std::uint16_t system = madeBy >> 8;
    const bool hasMode = system == FromUnix || system == FromDarwin;
    return (attributes & DosFolder) != 0 || (hasMode && (attributes & UnixKind) == UnixFolder);
}

/// The 64-bit values of an entry: of those that its record marks, in a fixed order.
class LargeField
{
public:
    explicit LargeField(std::string_view extra)
    {
        constexpr std::size_t headSize = 4;
        while (extra.size() >= headSize) {
            const std::size_t size = ZipU16(extra, 2);
            if (size > extra.size() - headSize) // the rest is padding of some programs
                return;
            if (ZipU16(extra, 0) == ZipLargeField) {
                m_isThere = true;
                m_values = extra.substr(headSize, size);
                return;
            }
            extra.remove_prefix(headSize + size);
        }
    }

    // Without the field the mark is a value as any other. False when the field is too short.
    bool take(std::uint64_t& value)
    {
        if (value != ZipSeeLarge || !m_isThere)
            return true;
        if (m_values.size() < sizeof(value))
            return false;
        value = ZipU64(m_values, 0);
        m_values.remove_prefix(sizeof(value));
        m_isUsed = true;
        return true;
    }

    bool isUsed() const { return m_isUsed; }

private:
    bool m_isThere = false;
    bool m_isUsed = false;
    std::string_view m_values;
};

class DirectoryReader
{
public:
    DirectoryReader(ArchiveFile& file, const ZipEnd& end)
        : m_file(file)
        , m_end(end)
    {
    }

    ZipDirectory read()
    {
        std::uint64_t rest = m_end.directorySize;
        while (rest != 0) {
            const std::uint64_t size = readRecord(rest);
            if (size == 0)
                break;
            rest -= size;
        }
        const std::size_t count = m_directory.entries.size();
        m_directory.complete =
            rest == 0 && (m_end.countIsKnown ? count == m_end.count : count >= static_cast<std::size_t>(m_end.count));
        markOverlapping();
        return std::move(m_directory);
    }

private:
    // The size of the record, 0 when it is none.
    std::uint64_t readRecord(std::uint64_t rest)
    {
        const std::uint64_t position = m_end.directory + m_end.directorySize - rest;
        char fixedBytes[ZipDirectoryRecordSize];
        m_file.seek(position, std::ios_base::beg);
        if (rest < sizeof(fixedBytes) || m_file.read(fixedBytes, sizeof(fixedBytes)) != sizeof(fixedBytes))
            return 0;
        const std::string_view fixed(fixedBytes, sizeof(fixedBytes));
        const std::size_t nameSize = ZipU16(fixed, 28);
        const std::size_t extraSize = ZipU16(fixed, 30);
        const std::uint64_t size = fixed.size() + nameSize + extraSize + ZipU16(fixed, 32);
        if (fixed.substr(0, ZipDirectoryRecordMark.size()) != ZipDirectoryRecordMark || size > rest)
            return 0;
        m_variable.resize(nameSize + extraSize);
        if (m_file.read(m_variable.data(), m_variable.size()) != m_variable.size())
            return 0;
        // All names stand in one text: an entry knows where its own ends, and begins where the one before it ended.
        m_directory.names.append(m_variable, 0, nameSize);
        addEntry(fixed, position, std::string_view(m_variable).substr(nameSize));
        return size;
    }

    void addEntry(std::string_view fixed, std::uint64_t position, std::string_view extra)
    {
        ZipEntry entry;
        entry.record = position - m_end.prefix;
        entry.nameEnd = m_directory.names.size();
        entry.method = ZipU16(fixed, 10);
        entry.checksum = ZipU32(fixed, 16);
        entry.compressedSize = ZipU32(fixed, 20);
        entry.size = ZipU32(fixed, 24);
        std::uint64_t offset = ZipU32(fixed, 42);
        LargeField large(extra);
        const bool areThere = large.take(entry.size) && large.take(entry.compressedSize) && large.take(offset);
        entry.isLarge = large.isUsed();
        // One with content is a file, whatever else is said of it: nothing may vanish.
        entry.isFolder = entry.size == 0 && IsFolder(ZipU32(fixed, 38), ZipU16(fixed, 4));
        if ((ZipU16(fixed, 8) & FlagEncrypted) != 0)
            entry.problem = ZipEntry::Problem::Encrypted;
        else if (entry.method != MethodStored && entry.method != MethodDeflated)
            entry.problem = ZipEntry::Problem::Method;
        else if (!areThere || !isBeforeDirectory(offset, entry.compressedSize))
            entry.problem = ZipEntry::Problem::Damaged;
        entry.header = m_end.prefix + offset;
        m_directory.entries.push_back(entry);
    }

    bool isBeforeDirectory(std::uint64_t offset, std::uint64_t compressedSize) const
    {
        const std::uint64_t room = m_end.directory - m_end.prefix;
        return offset <= room && ZipLocalHeaderSize <= room - offset &&
               compressedSize <= room - offset - ZipLocalHeaderSize;
    }

    // Entries that share bytes can grow to any size out of a small file; without that, compression has its limit. What
    // the local headers have beyond the directory's records is not looked up: it can only make the true extents larger.
    void markOverlapping()
    {
        std::vector<ZipEntry>& entries = m_directory.entries;
        std::vector<std::size_t> order(entries.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        const auto isBefore = [&](std::size_t a, std::size_t b) { return entries[a].header < entries[b].header; };
        if (!std::is_sorted(order.begin(), order.end(), isBefore))
            std::stable_sort(order.begin(), order.end(), isBefore);
        std::uint64_t end = 0;
        for (const std::size_t index : order) {
            ZipEntry& entry = entries[index];
            if (entry.problem == ZipEntry::Problem::Damaged)
                continue;
            if (entry.header < end && entry.problem == ZipEntry::Problem::None)
                entry.problem = ZipEntry::Problem::Overlapping;
            const std::uint64_t size = ZipLocalHeaderSize + m_directory.name(index).size() + entry.compressedSize;
            end = std::max(end, entry.header + size);
        }
    }

    ArchiveFile& m_file;
    const ZipEnd& m_end;
    ZipDirectory m_directory;
    std::string m_variable;
};

const char* MethodName(std::uint16_t method)
{
    static constexpr struct
    {
        std::uint16_t method;
        const char* name;
    } known[] = {{1, "shrunk"}, {6, "imploded"}, {9, "deflate64"}, {12, "bzip2"}, {14, "LZMA"},
                 {93, "zstd"},  {95, "XZ"},      {98, "PPMd"},     {99, "AES"}};
    const auto* const found =
        std::find_if(std::begin(known), std::end(known), [&](const auto& row) { return row.method == method; });
    return found == std::end(known) ? nullptr : found->name;
}

} // namespace

std::string_view ZipDirectory::name(std::size_t index) const
{
    const std::uint64_t start = index == 0 ? 0 : entries[index - 1].nameEnd;
    return std::string_view(names).substr(static_cast<std::size_t>(start),
                                          static_cast<std::size_t>(entries[index].nameEnd - start));
}

ZipDirectory ReadZipDirectory(ArchiveFile& file, const ZipEnd& end)
{
    return DirectoryReader(file, end).read();
}

std::string ZipProblemText(const ZipEntry& entry)
{
    switch (entry.problem) {
    case ZipEntry::Problem::None:
        break;
    case ZipEntry::Problem::Encrypted:
        return "Unzip encryption not supported";
    case ZipEntry::Problem::Method: {
        const char* const name = MethodName(entry.method);
        return "Unzip method " + std::to_string(entry.method) + (name ? " (" + std::string(name) + ")" : "") +
               " not supported";
    }
    case ZipEntry::Problem::Damaged:
        return "Unzip bad zip file";
    case ZipEntry::Problem::Overlapping:
        return "Unzip overlapping entries";
    }
    return {};
}

} // namespace vo::detail
