#include <Documents/MiniZip.h>

#include <Documents/ArchiveFile.h>

#include <unzip.h>
#include <zip.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <fstream>

namespace vo::detail {

namespace {

static_assert(ZipSystemError == UNZ_ERRNO && ZipSystemError == ZIP_ERRNO);
static_assert(ZipEndOfList == UNZ_END_OF_LIST_OF_FILE);
static_assert(ZipWrongParameter == UNZ_PARAMERROR && ZipWrongParameter == ZIP_PARAMERROR);
static_assert(ZipBadFile == UNZ_BADZIPFILE && ZipBadFile == ZIP_BADZIPFILE);
static_assert(ZipWrongChecksum == UNZ_CRCERROR);

constexpr std::size_t LongestName = 65535; // the format counts names in two bytes
constexpr uLong FlagEncrypted = 1U << 0;
constexpr uLong FlagUtf8Name = 1U << 11;
constexpr uLong MethodStored = 0;

// The functions through which the zip library uses files. It never sees an exception.
ArchiveFile* File(voidpf stream)
{
    return static_cast<ArchiveFile*>(stream);
}

voidpf OpenFile(voidpf, const void* name, int mode)
{
    const bool writes = (mode & ZLIB_FILEFUNC_MODE_READWRITEFILTER) != ZLIB_FILEFUNC_MODE_READ;
    return ArchiveFile::Open(*static_cast<const std::filesystem::path*>(name), writes).release();
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

int CloseFile(voidpf, voidpf stream)
{
    const std::unique_ptr<ArchiveFile> file(File(stream));
    return file->close() ? 0 : EOF;
}

int FileError(voidpf, voidpf stream)
{
    return File(stream)->hasFailed() ? 1 : 0;
}

zlib_filefunc64_def FileFunctions()
{
    return {OpenFile, ReadFile, WriteFile, TellFile, SeekFile, CloseFile, FileError, nullptr};
}

} // namespace

UnzipHandle::UnzipHandle() noexcept = default;
UnzipHandle::UnzipHandle(UnzipHandle&& other) noexcept = default;
UnzipHandle& UnzipHandle::operator=(UnzipHandle&& other) noexcept = default;
UnzipHandle::~UnzipHandle() = default;

UnzipHandle::UnzipHandle(const std::filesystem::path& file)
{
    zlib_filefunc64_def functions = FileFunctions();
    m_archive.reset(unzOpen2_64(&file, &functions));
}

void UnzipHandle::Closer::operator()(void* archive) const noexcept
{
    unzClose(archive);
}

int UnzipHandle::first()
{
    return unzGoToFirstFile(m_archive.get());
}

int UnzipHandle::next()
{
    return unzGoToNextFile(m_archive.get());
}

int UnzipHandle::record(ZipEntryRecord& record) const
{
    unz_file_info64 info{};
    // The usual name fits at once; a longer one is asked for again with all its room.
    char usual[512];
    int code = unzGetCurrentFileInfo64(m_archive.get(), &info, usual, sizeof(usual), nullptr, 0, nullptr, 0);
    if (code != UNZ_OK)
        return code;
    if (info.size_filename <= sizeof(usual)) {
        record.name.assign(usual, info.size_filename);
    } else {
        record.name.resize(info.size_filename);
        code = unzGetCurrentFileInfo64(m_archive.get(), &info, record.name.data(), info.size_filename, nullptr, 0,
                                       nullptr, 0);
        if (code != UNZ_OK)
            return code;
    }
    unz64_file_pos position{};
    code = unzGetFilePos64(m_archive.get(), &position);
    record.position = position.pos_in_zip_directory;
    record.number = position.num_of_file;
    record.size = info.uncompressed_size;
    record.readable = (info.flag & FlagEncrypted) == 0 &&
                      (info.compression_method == MethodStored || info.compression_method == Z_DEFLATED);
    return code;
}

std::uint64_t UnzipHandle::claimedCount() const
{
    unz_global_info64 info{};
    return unzGetGlobalInfo64(m_archive.get(), &info) == UNZ_OK ? info.number_entry : 0;
}

int UnzipHandle::open(std::uint64_t position, std::uint64_t number)
{
    const unz64_file_pos place{position, number};
    const int code = unzGoToFilePos64(m_archive.get(), &place);
    return code == UNZ_OK ? unzOpenCurrentFile(m_archive.get()) : code;
}

int UnzipHandle::read(char* data, std::size_t size)
{
    return unzReadCurrentFile(m_archive.get(), data, static_cast<unsigned>(std::min<std::size_t>(size, INT_MAX)));
}

int UnzipHandle::finishEntry()
{
    return unzCloseCurrentFile(m_archive.get());
}

int UnzipHandle::close()
{
    return m_archive ? unzClose(m_archive.release()) : UNZ_OK;
}

bool IsEmptyArchive(const std::filesystem::path& file)
{
    // Signature, eight bytes of disks and counts and eight of sizes and places that are all zero, the comment's length.
    constexpr std::size_t recordSize = 22;
    constexpr std::size_t commentLength = 20;
    std::ifstream stream(file, std::ios::binary);
    char record[recordSize];
    if (!stream.read(record, recordSize) || std::memcmp(record, "PK\5\6", 4) != 0)
        return false;
    if (!std::all_of(record + 4, record + commentLength, [](char byte) { return byte == 0; }))
        return false;
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(record[index]); };
    const std::uint64_t comment = byteAt(commentLength) + 256U * byteAt(commentLength + 1);
    std::error_code error;
    return std::filesystem::file_size(file, error) == recordSize + comment && !error;
}

ZipHandle::ZipHandle() noexcept = default;
ZipHandle::ZipHandle(ZipHandle&& other) noexcept = default;
ZipHandle& ZipHandle::operator=(ZipHandle&& other) noexcept = default;
ZipHandle::~ZipHandle() = default;

ZipHandle::ZipHandle(const std::filesystem::path& file)
{
    zlib_filefunc64_def functions = FileFunctions();
    m_archive.reset(zipOpen2_64(&file, APPEND_STATUS_CREATE, nullptr, &functions));
}

void ZipHandle::Closer::operator()(void* archive) const noexcept
{
    zipClose(archive, nullptr);
}

int ZipHandle::open(const std::string& name, int level)
{
    if (name.size() > LongestName || name.find('\0') != std::string::npos)
        return ZIP_PARAMERROR;
    const zip_fileinfo noDate{};
    const bool isAscii = std::all_of(name.begin(), name.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
    if (isAscii)
        return zipOpenNewFileInZip(m_archive.get(), name.c_str(), &noDate, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                   level);
    // The same with a flag, without which other programs take the name for another encoding.
    return zipOpenNewFileInZip4(m_archive.get(), name.c_str(), &noDate, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                level, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0, 0, FlagUtf8Name);
}

int ZipHandle::write(const char* data, std::size_t size)
{
    constexpr std::size_t portion = std::size_t{1} << 30; // one call takes an unsigned length
    while (size != 0) {
        const std::size_t count = std::min(size, portion);
        if (const int code = zipWriteInFileInZip(m_archive.get(), data, static_cast<unsigned>(count)))
            return code;
        data += count;
        size -= count;
    }
    return ZIP_OK;
}

int ZipHandle::close()
{
    return m_archive ? zipClose(m_archive.release(), nullptr) : ZIP_OK;
}

} // namespace vo::detail
