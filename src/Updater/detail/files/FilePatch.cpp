#include <Updater/detail/files/FilePatch.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/detail/files/FileDifference.h>

#include <zstd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <string>

namespace vo::updater::detail {

namespace {

constexpr const char Magic[] = "VOPATCH1";
constexpr std::size_t MagicSize = sizeof(Magic) - 1;
constexpr std::array<std::size_t, 5> FieldSizes = {8, 4, 4, 4, 4};
constexpr std::size_t HeadSize = 24;
// Differences are few: the time goes into finding them.
constexpr int CompressionLevel = 19;
// Takes a thirtieth of that time, and comes out about a tenth larger.
constexpr int TrialLevel = 9;

struct Window
{
    std::uint64_t oldOffset = 0;
    std::uint64_t oldLength = 0;
    std::uint64_t newLength = 0;
    std::uint64_t plainLength = 0;
    std::uint64_t packedLength = 0;
};

[[noreturn]] void Refuse(const VoFilePath& patch)
{
    throw VoInvalidConversionException("Patch does not fit: " + patch.path());
}

// Instructions that are longer than this are of no use: those that only list what is new are shorter.
std::uint64_t MostInstructions(std::uint64_t newLength)
{
    return 4 * newLength + 1024;
}

// A file that is read from wherever one likes.
class Source
{
public:
    explicit Source(const VoFilePath& path)
        : m_path(path)
        , m_size(VoFileSystem::FileSize(path))
        , m_stream(vo::detail::ToNative(path), std::ios::binary)
    {
        if (!m_stream)
            throw VoCannotOpenFileException(path);
    }

    std::uint64_t size() const { return m_size; }
    std::uint64_t position() const { return m_position; }

    std::string read(std::uint64_t count)
    {
        std::string bytes(static_cast<std::size_t>(count), '\0');
        m_stream.read(&bytes[0], static_cast<std::streamsize>(count));
        if (m_stream.gcount() != static_cast<std::streamsize>(count))
            throw VoFileException("File changed while it was read: " + m_path.path(), m_path);
        m_position += count;
        return bytes;
    }

    std::string read(std::uint64_t offset, std::uint64_t count)
    {
        m_stream.seekg(static_cast<std::streamoff>(offset));
        m_position = offset;
        return read(count);
    }

private:
    const VoFilePath m_path;
    const std::uint64_t m_size;
    std::ifstream m_stream;
    std::uint64_t m_position = 0;
};

// The part of the old file around the place that corresponds to that in the new one.
void ChooseOld(Window& window, std::uint64_t at, std::uint64_t oldSize, std::uint64_t newSize, std::uint64_t most)
{
    window.oldLength = std::min(oldSize, most);
    const std::uint64_t middleOfNew = at + window.newLength / 2;
    const double share = static_cast<double>(middleOfNew) / static_cast<double>(newSize);
    const auto middle = static_cast<std::uint64_t>(share * static_cast<double>(oldSize));
    const std::uint64_t start = middle - std::min(middle, window.oldLength / 2);
    window.oldOffset = std::min(start, oldSize - window.oldLength);
}

std::string Packed(const std::string& plain, int level = CompressionLevel)
{
    std::string packed(ZSTD_compressBound(plain.size()), '\0');
    const std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context(ZSTD_createCCtx(), &ZSTD_freeCCtx);
    const std::size_t size =
        context ? ZSTD_compressCCtx(context.get(), &packed[0], packed.size(), plain.data(), plain.size(), level) : 0;
    if (size == 0 || ZSTD_isError(size))
        throw VoInvalidConversionException("Patch cannot be compressed");
    packed.resize(size);
    return packed;
}

// Whether instructions will have more bytes in the end. Those of a file that has little of the old one are
// nearly as many as its bytes, and compressing them well takes longer than all the rest.
bool IsHopeless(const std::string& plain, std::uint64_t mostBytes)
{
    constexpr double leastLeft = 0.85; // by the final level, of what the trial gives, as a rule
    return plain.size() > mostBytes &&
           leastLeft * static_cast<double>(Packed(plain, TrialLevel).size()) > static_cast<double>(mostBytes);
}

// Into a buffer of the length that was promised, and checked: whatever the frame says, no more comes out.
bool Unpack(const std::string& packed, std::string& plain)
{
    const std::size_t size = ZSTD_decompress(&plain[0], plain.size(), packed.data(), packed.size());
    return !ZSTD_isError(size) && size == plain.size();
}

std::string HeadOf(const Window& window)
{
    const std::array<std::uint64_t, 5> fields = {window.oldOffset, window.oldLength, window.newLength,
                                                 window.plainLength, window.packedLength};
    std::string head;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        for (std::size_t byte = FieldSizes[i]; byte-- > 0;)
            head += static_cast<char>(fields[i] >> (8 * byte));
    }
    return head;
}

Window ReadHead(const std::string& head)
{
    std::array<std::uint64_t, 5> fields{};
    std::size_t at = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        for (std::size_t byte = 0; byte < FieldSizes[i]; ++byte)
            fields[i] = fields[i] << 8 | static_cast<unsigned char>(head[at++]);
    }
    return {fields[0], fields[1], fields[2], fields[3], fields[4]};
}

bool Fits(const Window& window, std::uint64_t oldSize, std::uint64_t newLeft, std::uint64_t patchLeft)
{
    return window.oldLength <= PatchWindow().old && window.oldOffset <= oldSize &&
           window.oldLength <= oldSize - window.oldOffset && window.newLength > 0 &&
           window.newLength <= PatchWindow().made && window.newLength <= newLeft &&
           window.plainLength <= MostInstructions(window.newLength) && window.packedLength <= patchLeft &&
           window.packedLength <= ZSTD_compressBound(static_cast<std::size_t>(window.plainLength));
}

} // namespace

bool MakePatch(const VoFilePath& before, const VoFilePath& after, const VoFilePath& patch,
               const std::function<void()>& between, const PatchWindow& most, std::uint64_t mostBytes)
{
    Source oldFile(before);
    Source newFile(after);
    VoAtomicFileWriter writer(patch);
    writer.write(Magic, MagicSize);
    while (newFile.position() < newFile.size()) {
        between();
        Window window;
        window.newLength = std::min(newFile.size() - newFile.position(), most.made);
        ChooseOld(window, newFile.position(), oldFile.size(), newFile.size(), most.old);
        const std::string plain =
            FindDifference(oldFile.read(window.oldOffset, window.oldLength), newFile.read(window.newLength));
        if (IsHopeless(plain, mostBytes))
            return false;
        const std::string packed = Packed(plain);
        mostBytes -= std::min<std::uint64_t>(mostBytes, packed.size());
        window.plainLength = plain.size();
        window.packedLength = packed.size();
        const std::string head = HeadOf(window);
        writer.write(head.data(), head.size());
        writer.write(packed.data(), packed.size());
    }
    writer.commit();
    return true;
}

void ApplyPatch(const VoFilePath& before, const VoFilePath& patch, std::uint64_t size,
                const std::function<void(const char*, std::size_t)>& write)
{
    Source oldFile(before);
    Source source(patch);
    if (source.size() < MagicSize || source.read(MagicSize) != Magic)
        Refuse(patch);
    for (std::uint64_t made = 0; made < size;) {
        if (source.size() - source.position() < HeadSize)
            Refuse(patch);
        const Window window = ReadHead(source.read(HeadSize));
        if (!Fits(window, oldFile.size(), size - made, source.size() - source.position()))
            Refuse(patch);
        std::string plain(static_cast<std::size_t>(window.plainLength), '\0');
        if (!Unpack(source.read(window.packedLength), plain))
            Refuse(patch);
        std::string part(static_cast<std::size_t>(window.newLength), '\0');
        if (!ApplyDifference(oldFile.read(window.oldOffset, window.oldLength), plain, part))
            Refuse(patch);
        write(part.data(), part.size());
        made += part.size();
    }
    if (source.position() != source.size())
        Refuse(patch);
}

} // namespace vo::updater::detail
