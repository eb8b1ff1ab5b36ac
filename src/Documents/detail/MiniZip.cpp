#include <Documents/detail/MiniZip.h>

#include <Documents/detail/ArchiveFile.h>
#include <Documents/detail/ZipBytes.h>
#include <Documents/detail/ZipDirectory.h>

#include <unzip.h>
#include <zip.h>

#include <algorithm>
#include <climits>
#include <utility>

namespace vo::detail {

namespace {

// NOLINTBEGIN(misc-redundant-expression): two names of one number, each of which could change
static_assert(ZipSystemError == UNZ_ERRNO && ZipSystemError == ZIP_ERRNO);
static_assert(ZipEndOfList == UNZ_END_OF_LIST_OF_FILE);
static_assert(ZipWrongParameter == UNZ_PARAMERROR && ZipWrongParameter == ZIP_PARAMERROR);
static_assert(ZipBadFile == UNZ_BADZIPFILE && ZipBadFile == ZIP_BADZIPFILE);
static_assert(ZipWrongChecksum == UNZ_CRCERROR);
// NOLINTEND(misc-redundant-expression)

constexpr std::size_t LongestName = 65535; // the format counts names in two bytes
constexpr uLong FlagUtf8Name = 1U << 11;
constexpr std::uint64_t LargeFieldSize = 20; // in a local header: the field's head and both sizes

// The format counts days and months from 1. Without them other programs warn of the headers.
constexpr uLong FirstDate = 0x0021; // 1980-01-01, as the upper half of date and time
constexpr uLong FirstDateAndTime = FirstDate << 16;

// The functions through which the zip library uses a file that is open already. It never sees an exception.
ArchiveFile* File(voidpf stream)
{
    return static_cast<ArchiveFile*>(stream);
}

voidpf UseFile(voidpf file, const void*, int)
{
    return file;
}

uLong ReadFile(voidpf, voidpf stream, void* data, uLong size)
{
    return static_cast<uLong>(File(stream)->read(static_cast<char*>(data), size));
}

uLong WriteFile(voidpf, voidpf stream, const void* data, uLong size)
{
    return static_cast<uLong>(File(stream)->write(static_cast<const char*>(data), size));
}

ZPOS64_T TellFile(voidpf, voidpf stream)
{
    return File(stream)->tell();
}

long SeekFile(voidpf, voidpf stream, ZPOS64_T offset, int origin)
{
    const auto from = origin == ZLIB_FILEFUNC_SEEK_SET   ? std::ios_base::beg
                      : origin == ZLIB_FILEFUNC_SEEK_CUR ? std::ios_base::cur
                                                         : std::ios_base::end;
    return File(stream)->seek(offset, from) ? 0 : -1;
}

int LeaveFile(voidpf, voidpf)
{
    return 0;
}

int FileError(voidpf, voidpf stream)
{
    return File(stream)->hasFailed() ? 1 : 0;
}

zlib_filefunc64_def FileFunctions(ArchiveFile& file)
{
    return {UseFile, ReadFile, WriteFile, TellFile, SeekFile, LeaveFile, FileError, &file};
}

bool NeedsLargeField(std::uint64_t value)
{
    return value >= ZipSeeLarge;
}

} // namespace

UnzipHandle::UnzipHandle(ArchiveFile& file)
{
    zlib_filefunc64_def functions = FileFunctions(file);
    m_archive.reset(unzOpen2_64("", &functions));
}

void UnzipHandle::Closer::operator()(void* archive) const noexcept
{
    unzClose(archive);
}

bool UnzipHandle::goTo(const ZipEntry& entry, std::uint64_t index)
{
    const unz64_file_pos place{entry.record, index};
    unz_file_info64 info{};
    return unzGoToFilePos64(m_archive.get(), &place) == UNZ_OK &&
           unzGetCurrentFileInfo64(m_archive.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0) == UNZ_OK &&
           info.crc == entry.checksum && info.compression_method == entry.method &&
           info.uncompressed_size == entry.size && info.compressed_size == entry.compressedSize;
}

int UnzipHandle::open()
{
    return unzOpenCurrentFile(m_archive.get());
}

int UnzipHandle::read(char* data, std::size_t size)
{
    return unzReadCurrentFile(m_archive.get(), data, static_cast<unsigned>(std::min<std::size_t>(size, INT_MAX)));
}

int UnzipHandle::finishEntry()
{
    return unzCloseCurrentFile(m_archive.get());
}

ZipHandle::ZipHandle() noexcept = default;
ZipHandle::ZipHandle(ZipHandle&& other) noexcept = default;
ZipHandle::~ZipHandle() = default;

ZipHandle::ZipHandle(const std::filesystem::path& file)
    : m_file(ArchiveFile::Open(file, true))
{
    if (!m_file)
        return;
    zlib_filefunc64_def functions = FileFunctions(*m_file);
    m_archive.reset(zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions));
}

std::error_code ZipHandle::error() const noexcept
{
    return m_file ? m_file->error() : std::error_code();
}

void ZipHandle::Closer::operator()(void* archive) const noexcept
{
    zipClose(archive, nullptr);
}

int ZipHandle::open(const std::string& name, int level, std::uint64_t expectedSize)
{
    if (!m_archive || name.size() > LongestName || name.find('\0') != std::string::npos)
        return ZIP_PARAMERROR;
    if (const int failed = finishEntry())
        return failed;
    m_entry = Entry();
    m_entry.header = m_file->tell();
    m_entry.nameSize = name.size();
    m_entry.hasLargeField = NeedsLargeField(expectedSize);
    const int code = openInLibrary(name, level);
    m_isOpen = code == ZIP_OK;
    return code;
}

int ZipHandle::openInLibrary(const std::string& name, int level)
{
    zip_fileinfo info{};
    info.dosDate = FirstDateAndTime;
    const bool isAscii = std::all_of(name.begin(), name.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
    if (isAscii && !m_entry.hasLargeField)
        return zipOpenNewFileInZip(m_archive.get(), name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                   level);
    // The same with room for the field, and with a flag without which other programs take the name for another
    // encoding.
    return zipOpenNewFileInZip4_64(m_archive.get(), name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                   level, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0, 0,
                                   isAscii ? 0 : FlagUtf8Name, m_entry.hasLargeField ? 1 : 0);
}

int ZipHandle::write(const char* data, std::size_t size)
{
    constexpr std::size_t portion = std::size_t{1} << 30; // one call takes an unsigned length
    while (size != 0) {
        const std::size_t count = std::min(size, portion);
        if (const int code = zipWriteInFileInZip(m_archive.get(), data, static_cast<unsigned>(count)))
            return code;
        m_entry.size += count;
        data += count;
        size -= count;
    }
    return ZIP_OK;
}

int ZipHandle::finishEntry()
{
    if (!std::exchange(m_isOpen, false))
        return ZIP_OK;
    int code = zipCloseFileInZip(m_archive.get());
    const std::uint64_t fieldSize = m_entry.hasLargeField ? LargeFieldSize : 0;
    const std::uint64_t content = m_entry.header + ZipLocalHeaderSize + m_entry.nameSize + fieldSize;
    const std::uint64_t compressedSize = m_file->tell() - content;
    const int largeValues = int{NeedsLargeField(m_entry.size)} + int{NeedsLargeField(compressedSize)};
    // Some versions of the library leave out sizes for which there is no room, others call the file bad.
    if (code == ZIP_BADZIPFILE && largeValues != 0 && !m_entry.hasLargeField)
        code = ZIP_OK;
    if (code == ZIP_OK && (largeValues != 0 || m_entry.hasLargeField))
        code = completeHeader(compressedSize);
    const int directoryValues = largeValues + int{NeedsLargeField(m_entry.header)};
    m_directorySize += ZipDirectoryRecordSize + m_entry.nameSize;
    m_directorySize += directoryValues == 0 ? 0U : 4U + 8U * static_cast<unsigned>(directoryValues);
    ++m_count;
    return code;
}

// What the library writes of sizes beyond four bytes is not right in all cases.
int ZipHandle::completeHeader(std::uint64_t compressedSize)
{
    const std::uint64_t field = m_entry.header + ZipLocalHeaderSize + m_entry.nameSize;
    if (!m_entry.hasLargeField && !m_file->insert(field, LargeFieldSize))
        return ZIP_ERRNO;
    const std::uint64_t end = m_file->size();
    constexpr std::uint64_t version = 45; // the first one of the format that has the field
    int code = writeAt(m_entry.header + 4, ZipRecord().u16(version).bytes());
    if (code == ZIP_OK)
        code = writeAt(m_entry.header + 18,
                       ZipRecord().u32(ZipSeeLarge).u32(ZipSeeLarge).u16(m_entry.nameSize).u16(LargeFieldSize).bytes());
    if (code == ZIP_OK)
        code = writeAt(field, ZipRecord().u16(ZipLargeField).u16(16).u64(m_entry.size).u64(compressedSize).bytes());
    m_file->seek(end, std::ios_base::beg);
    return code;
}

int ZipHandle::close()
{
    if (!m_archive)
        return ZIP_OK;
    int code = finishEntry();
    const std::uint64_t directory = m_file->tell();
    const int closed = zipClose(m_archive.release(), nullptr);
    if (code == ZIP_OK)
        code = closed;
    if (code == ZIP_OK &&
        (m_count >= ZipSeeLargeCount || NeedsLargeField(directory) || NeedsLargeField(m_directorySize)))
        code = completeEnd(directory);
    const bool isWhole = m_file->close();
    return code == ZIP_OK && !isWhole ? ZIP_ERRNO : code;
}

// The library counts positions only, and so writes 64-bit end records too seldom. Its own are overwritten: they are as
// long as these or shorter.
int ZipHandle::completeEnd(std::uint64_t directory)
{
    const std::uint64_t end = directory + m_directorySize;
    const std::uint64_t written = m_file->size() - end;
    if (written != ZipEndSize && written != ZipLargeEndSize + ZipLargeEndLocatorSize + ZipEndSize)
        return ZIP_INTERNALERROR;
    ZipRecord large(ZipLargeEndMark);
    large.u64(ZipLargeEndSize - 12).u16(45).u16(45).u32(0).u32(0); // versions and disks
    large.u64(m_count).u64(m_count).u64(m_directorySize).u64(directory);
    ZipRecord locator(ZipLargeEndLocatorMark);
    locator.u32(0).u64(end).u32(1);
    ZipRecord classic(ZipEndMark);
    const std::uint64_t count = std::min<std::uint64_t>(m_count, ZipSeeLargeCount);
    classic.u16(0).u16(0).u16(count).u16(count);
    classic.u32(std::min<std::uint64_t>(m_directorySize, ZipSeeLarge));
    classic.u32(std::min<std::uint64_t>(directory, ZipSeeLarge)).u16(0);
    return writeAt(end, large.bytes() + locator.bytes() + classic.bytes());
}

int ZipHandle::writeAt(std::uint64_t position, const std::string& bytes)
{
    const bool done =
        m_file->seek(position, std::ios_base::beg) && m_file->write(bytes.data(), bytes.size()) == bytes.size();
    return done ? ZIP_OK : ZIP_ERRNO;
}

} // namespace vo::detail
