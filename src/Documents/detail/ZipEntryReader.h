#pragma once

#include <Documents/detail/ZipDirectory.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vo::detail {

class ArchiveFile;

/// Reads an entry whose sizes or position need the 64-bit field. The zip library does not do it: where the system's
/// long has eight bytes it overlooks the field.
///
/// Results are the codes of MiniZip.h, or the compression library's.
class ZipEntryReader
{
public:
    ZipEntryReader() noexcept;
    ~ZipEntryReader();

    int open(ArchiveFile& file, const ZipEntry& entry); ///< The file must outlive the reading.
    int read(char* data, std::size_t size);             ///< Bytes read, 0 at the end, or a code below zero.
    int finish() const;                                 ///< ZipWrongChecksum when what was read is damaged.

private:
    struct Inflater;

    int copy(char* data, std::size_t size);
    int inflate(char* data, std::size_t size);
    std::size_t take(char* data, std::size_t size);

    ArchiveFile* m_file = nullptr;
    std::uint64_t m_position = 0; // of what was not taken from the file yet
    std::uint64_t m_rest = 0;     // compressed bytes from there on
    std::uint32_t m_checksum = 0;
    std::uint32_t m_expectedChecksum = 0;
    std::unique_ptr<Inflater> m_inflater; // not for stored entries
};

} // namespace vo::detail
