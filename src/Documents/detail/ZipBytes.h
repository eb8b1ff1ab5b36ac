#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// @file
/// Numbers and marks of the zip format. Numbers are stored with their lowest byte first.

namespace vo::detail {

/// A size or position of four bytes with this value means: see the 64-bit field. The same for counts of two bytes.
/// @{
inline constexpr std::uint32_t ZipSeeLarge = 0xFFFFFFFF;
inline constexpr std::uint16_t ZipSeeLargeCount = 0xFFFF;
/// @}
inline constexpr std::uint16_t ZipLargeField = 1; ///< Identifier of the extra field with 64-bit values.

/// Lengths of records without their names, fields and comments.
/// @{
inline constexpr std::size_t ZipLocalHeaderSize = 30;
inline constexpr std::size_t ZipDirectoryRecordSize = 46;
inline constexpr std::size_t ZipEndSize = 22;
inline constexpr std::size_t ZipLargeEndSize = 56;
inline constexpr std::size_t ZipLargeEndLocatorSize = 20;
/// @}

/// How records begin.
/// @{
inline constexpr std::string_view ZipLocalHeaderMark = "PK\3\4";
inline constexpr std::string_view ZipDirectoryRecordMark = "PK\1\2";
inline constexpr std::string_view ZipEndMark = "PK\5\6";
inline constexpr std::string_view ZipLargeEndMark = "PK\6\6";
inline constexpr std::string_view ZipLargeEndLocatorMark = "PK\6\7";
/// @}

/// The number of `Size` bytes at an offset, which must be there.
template <std::size_t Size>
std::uint64_t ZipNumber(std::string_view bytes, std::size_t offset)
{
    std::uint64_t number = 0;
    for (std::size_t i = Size; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return number;
}

inline std::uint16_t ZipU16(std::string_view bytes, std::size_t offset)
{
    return static_cast<std::uint16_t>(ZipNumber<2>(bytes, offset));
}

inline std::uint32_t ZipU32(std::string_view bytes, std::size_t offset)
{
    return static_cast<std::uint32_t>(ZipNumber<4>(bytes, offset));
}

inline std::uint64_t ZipU64(std::string_view bytes, std::size_t offset)
{
    return ZipNumber<8>(bytes, offset);
}

/// Puts a record together.
class ZipRecord
{
public:
    explicit ZipRecord(std::string_view mark = {})
        : m_bytes(mark)
    {
    }

    ZipRecord& u16(std::uint64_t value) { return number(value, 2); }
    ZipRecord& u32(std::uint64_t value) { return number(value, 4); }
    ZipRecord& u64(std::uint64_t value) { return number(value, 8); }
    const std::string& bytes() const noexcept { return m_bytes; }

private:
    ZipRecord& number(std::uint64_t value, int size)
    {
        for (; size > 0; --size, value >>= 8)
            m_bytes += static_cast<char>(value & 0xFF);
        return *this;
    }

    std::string m_bytes;
};

} // namespace vo::detail
