#include <Documents/detail/ZipEntryReader.h>

#include <Documents/detail/ArchiveFile.h>
#include <Documents/detail/MiniZip.h>
#include <Documents/detail/ZipBytes.h>

#include <zlib.h>

#include <algorithm>
#include <climits>

namespace vo::detail {

struct ZipEntryReader::Inflater
{
    Inflater() = default;
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { inflateEnd(&state); }

    z_stream state{};
    char input[std::size_t{64} * 1024];
};

ZipEntryReader::ZipEntryReader() noexcept = default;
ZipEntryReader::~ZipEntryReader() = default;

int ZipEntryReader::open(ArchiveFile& file, const ZipEntry& entry)
{
    char bytes[ZipLocalHeaderSize];
    file.seek(entry.header, std::ios_base::beg);
    if (file.read(bytes, sizeof(bytes)) != sizeof(bytes))
        return ZipSystemError;
    const std::string_view header(bytes, sizeof(bytes));
    if (header.substr(0, ZipLocalHeaderMark.size()) != ZipLocalHeaderMark || ZipU16(header, 8) != entry.method)
        return ZipBadFile;
    m_file = &file;
    m_position = entry.header + ZipLocalHeaderSize + ZipU16(header, 26) + ZipU16(header, 28);
    m_rest = entry.compressedSize;
    m_checksum = 0;
    m_expectedChecksum = entry.checksum;
    m_inflater.reset();
    if (entry.method == Z_DEFLATED) {
        m_inflater = std::make_unique<Inflater>();
        return inflateInit2(&m_inflater->state, -MAX_WBITS); // without a header of its own
    }
    return ZipDone;
}

int ZipEntryReader::read(char* data, std::size_t size)
{
    size = std::min<std::size_t>(size, INT_MAX);
    const int taken = m_inflater ? inflate(data, size) : copy(data, size);
    if (taken > 0)
        m_checksum = static_cast<std::uint32_t>(
            crc32(m_checksum, reinterpret_cast<const Bytef*>(data), static_cast<uInt>(taken)));
    return taken;
}

int ZipEntryReader::finish() const
{
    return m_checksum == m_expectedChecksum ? ZipDone : ZipWrongChecksum;
}

int ZipEntryReader::copy(char* data, std::size_t size)
{
    const std::size_t taken = take(data, size);
    return taken == 0 && m_rest != 0 ? static_cast<int>(ZipSystemError) : static_cast<int>(taken);
}

int ZipEntryReader::inflate(char* data, std::size_t size)
{
    z_stream& state = m_inflater->state;
    state.next_out = reinterpret_cast<Bytef*>(data);
    state.avail_out = static_cast<uInt>(size);
    int code = Z_OK;
    while (code == Z_OK && state.avail_out != 0) {
        if (state.avail_in == 0) {
            state.next_in = reinterpret_cast<Bytef*>(m_inflater->input);
            state.avail_in = static_cast<uInt>(take(m_inflater->input, sizeof(m_inflater->input)));
            if (state.avail_in == 0 && m_rest != 0)
                return ZipSystemError;
        }
        code = ::inflate(&state, Z_NO_FLUSH);
    }
    if (code != Z_OK && code != Z_STREAM_END)
        return code < 0 ? code : Z_DATA_ERROR;
    return static_cast<int>(size - state.avail_out);
}

// Compressed bytes from the file, fewer only at their end or when the file has no more.
std::size_t ZipEntryReader::take(char* data, std::size_t size)
{
    m_file->seek(m_position, std::ios_base::beg);
    const std::size_t taken = m_file->read(data, static_cast<std::size_t>(std::min<std::uint64_t>(size, m_rest)));
    m_position += taken;
    m_rest -= taken;
    return taken;
}

} // namespace vo::detail
