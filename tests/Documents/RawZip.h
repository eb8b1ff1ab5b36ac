#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vo::test {

/// An entry of an archive as a hostile program would write it: every field may lie.
struct RawEntry
{
    std::string name;
    std::string content;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::int64_t claimedSize = -1; ///< Instead of the true one, in both headers.
    std::uint32_t crcError = 0;    ///< Bits that are wrong in the checksum.
    std::uint32_t attributes = 0;
    bool isLarge = false;         ///< Sizes and position are in the directory's 64-bit field.
    std::int64_t headerFrom = -1; ///< The place of its header, instead of the true one.
};

/// The checksum of the format, bit by bit.
inline std::uint32_t Crc32(std::string_view bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

/// Appends numbers in the format's order of bytes.
class RawBytes
{
public:
    RawBytes& u16(std::uint64_t value) { return number(value, 2); }
    RawBytes& u32(std::uint64_t value) { return number(value, 4); }
    RawBytes& u64(std::uint64_t value) { return number(value, 8); }
    RawBytes& text(std::string_view bytes)
    {
        m_bytes += bytes;
        return *this;
    }
    const std::string& bytes() const { return m_bytes; }

private:
    RawBytes& number(std::uint64_t value, int count)
    {
        for (int i = 0; i < count; ++i)
            m_bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
        return *this;
    }

    std::string m_bytes;
};

/// The bytes of an archive, made without the zip library. Entries are stored, whatever their method claims. The
/// directory claims a number of entries that is wrong by `countError`.
inline std::string RawArchive(const std::vector<RawEntry>& entries, std::string_view comment = {}, int countError = 0)
{
    constexpr std::uint32_t mark = 0xFFFFFFFF;
    RawBytes archive;
    RawBytes directory;
    for (const RawEntry& entry : entries) {
        const std::uint64_t offset =
            entry.headerFrom < 0 ? archive.bytes().size() : static_cast<std::uint64_t>(entry.headerFrom);
        const auto size = entry.claimedSize < 0 ? entry.content.size() : static_cast<std::uint64_t>(entry.claimedSize);
        RawBytes common;
        common.u16(20).u16(entry.flags).u16(entry.method).u32(0x00210000); // the first day of the format
        common.u32(Crc32(entry.content) ^ entry.crcError);
        common.u32(entry.isLarge ? mark : entry.content.size()).u32(entry.isLarge ? mark : size).u16(entry.name.size());
        RawBytes field;
        if (entry.isLarge)
            field.u16(0xCAFE).u16(1).text("x").u16(1).u16(24).u64(size).u64(entry.content.size()).u64(offset);
        archive.text("PK\3\4").text(common.bytes()).u16(0).text(entry.name).text(entry.content);
        directory.text("PK\1\2").u16(20).text(common.bytes()).u16(field.bytes().size()).u16(0).u16(0).u16(0);
        directory.u32(entry.attributes).u32(entry.isLarge ? mark : offset).text(entry.name).text(field.bytes());
    }
    const std::size_t start = archive.bytes().size();
    archive.text(directory.bytes());
    const std::size_t count = entries.size() + static_cast<std::size_t>(countError);
    archive.text("PK\5\6").u16(0).u16(0).u16(count).u16(count);
    archive.u32(directory.bytes().size()).u32(start).u16(comment.size()).text(comment);
    return archive.bytes();
}

} // namespace vo::test
