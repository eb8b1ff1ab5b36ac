#include <Core/VoByteArray.h>

#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoThrow.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <ostream>

#include <libdeflate.h>

namespace {

// The largest array of Qt, whose compressed form this is, and the length of the size in front of the stream.
constexpr std::size_t MaximumSize = 2147483647;
constexpr std::size_t PrefixSize = 4;

// Two bits of a deflate stream give at most 258 bytes.
constexpr std::uint64_t BestRatio = 1032;

constexpr int DefaultLevel = 6;
constexpr int SmallestLevel = 12;

using Compressor = std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)>;
using Decompressor = std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)>;

void RequireQtSize(std::size_t size, const char* verb)
{
    if (size <= MaximumSize)
        return;
    throw VoOverflowException(VoString("Cannot ") + verb +
                              " byte array as length is beyond maximum allowed size. Array size " + VoString(size) +
                              " bytes, maximum size " + VoString(MaximumSize) + " bytes.");
}

[[noreturn]] void FailInvalidData()
{
    throw VoInvalidConversionException("Cannot decompress byte array as data is invalid");
}

void PutBigEndian(char* place, std::size_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        *place++ = static_cast<char>(static_cast<unsigned char>(value >> shift));
}

std::size_t BigEndian(const char* place)
{
    std::size_t value = 0;
    for (std::size_t i = 0; i < PrefixSize; ++i)
        value = value << 8 | static_cast<unsigned char>(place[i]);
    return value;
}

Compressor NewCompressor(int level)
{
    const bool known = level >= 0 && level <= SmallestLevel;
    Compressor compressor(libdeflate_alloc_compressor(known ? level : DefaultLevel), &libdeflate_free_compressor);
    if (!compressor)
        vo::detail::ThrowBadAlloc("compression");
    return compressor;
}

// Whether the stream is whole and gives exactly so many bytes.
bool Inflate(const char* stream, std::size_t streamSize, char* target, std::size_t size)
{
    const Decompressor decompressor(libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
    if (!decompressor)
        vo::detail::ThrowBadAlloc("decompression");
    return libdeflate_zlib_decompress(decompressor.get(), stream, streamSize, target, size, nullptr) ==
           LIBDEFLATE_SUCCESS;
}

} // namespace

void VoByteArray::Free::operator()(char* memory) const noexcept
{
    std::free(memory);
}

VoByteArray::VoByteArray() noexcept = default;

VoByteArray::VoByteArray(std::size_t size)
{
    resize(size);
}

VoByteArray::VoByteArray(const char* bytes, std::size_t count)
{
    append(bytes, count);
}

VoByteArray::VoByteArray(const VoByteArray& other)
    : VoByteArray(other.cdata(), other.size())
{
}

VoByteArray::VoByteArray(VoByteArray&& other) noexcept
    : m_bytes(std::move(other.m_bytes))
    , m_size(std::exchange(other.m_size, 0))
    , m_allocated(std::exchange(other.m_allocated, 0))
{
}

VoByteArray& VoByteArray::operator=(const VoByteArray& other)
{
    if (this != &other)
        *this = VoByteArray(other);
    return *this;
}

VoByteArray& VoByteArray::operator=(VoByteArray&& other) noexcept
{
    VoByteArray taken(std::move(other));
    m_bytes.swap(taken.m_bytes);
    std::swap(m_size, taken.m_size);
    std::swap(m_allocated, taken.m_allocated);
    return *this;
}

VoByteArray::~VoByteArray() = default;

char* VoByteArray::data() noexcept
{
    return m_bytes.get();
}

const char* VoByteArray::data() const noexcept
{
    return m_bytes.get();
}

const char* VoByteArray::cdata() const noexcept
{
    return m_bytes.get();
}

std::size_t VoByteArray::size() const noexcept
{
    return m_size;
}

bool VoByteArray::isEmpty() const noexcept
{
    return m_size == 0;
}

std::size_t VoByteArray::allocatedSize() const noexcept
{
    return m_allocated;
}

char& VoByteArray::operator[](std::size_t index) noexcept
{
    return m_bytes.get()[index];
}

const char& VoByteArray::operator[](std::size_t index) const noexcept
{
    return m_bytes.get()[index];
}

char& VoByteArray::at(std::size_t index)
{
    if (index >= m_size)
        vo::detail::ThrowIndexOutOfBounds(index, m_size);
    return m_bytes.get()[index];
}

const char& VoByteArray::at(std::size_t index) const
{
    if (index >= m_size)
        vo::detail::ThrowIndexOutOfBounds(index, m_size);
    return m_bytes.get()[index];
}

void VoByteArray::allocate(std::size_t count)
{
    if (count > m_allocated)
        reallocate(count);
}

void VoByteArray::resize(std::size_t size)
{
    if (size > m_allocated && m_size == 0) {
        // Zeroed by the system, page by page when touched.
        char* const zeroed = static_cast<char*>(std::calloc(size, 1));
        if (!zeroed)
            vo::detail::ThrowBadAlloc("byte array");
        m_bytes.reset(zeroed);
        m_allocated = size;
    } else if (size > m_size) {
        allocate(size);
        std::memset(m_bytes.get() + m_size, 0, size - m_size);
    }
    m_size = size;
}

void VoByteArray::expandTo(std::size_t size)
{
    if (size > m_size)
        resize(size);
}

void VoByteArray::append(const char* bytes, std::size_t count)
{
    if (count == 0)
        return;
    if (count > std::numeric_limits<std::size_t>::max() / 2 - m_size)
        vo::detail::ThrowBadAlloc("byte array");
    const std::size_t size = m_size + count;
    if (size > m_allocated)
        reallocate(std::max(size, m_size + m_size / 2));
    std::memcpy(m_bytes.get() + m_size, bytes, count);
    m_size = size;
}

void VoByteArray::clear() noexcept
{
    m_size = 0;
}

VoByteArray VoByteArray::compress(int level) const
{
    RequireQtSize(m_size, "compress");
    VoByteArray result;
    if (m_size == 0) {
        result.resize(PrefixSize);
        return result;
    }
    const Compressor compressor = NewCompressor(level);
    const std::size_t room = libdeflate_zlib_compress_bound(compressor.get(), m_size);
    result.allocate(PrefixSize + room);
    PutBigEndian(result.data(), m_size);
    const std::size_t streamSize =
        libdeflate_zlib_compress(compressor.get(), cdata(), m_size, result.data() + PrefixSize, room);
    result.m_size = PrefixSize + streamSize;
    result.reallocate(result.m_size);
    return result;
}

VoByteArray VoByteArray::decompress() const
{
    RequireQtSize(m_size, "decompress");
    if (m_size == 0)
        return {};
    if (m_size < PrefixSize)
        FailInvalidData();
    const std::size_t streamSize = m_size - PrefixSize;
    const std::size_t size = BigEndian(cdata());
    if (size == 0 && streamSize == 0)
        return {};
    if (size > MaximumSize || size > BestRatio * streamSize)
        FailInvalidData();
    VoByteArray result;
    result.allocate(std::max<std::size_t>(size, 1)); // a null pointer is no room, not even for nothing
    if (!Inflate(cdata() + PrefixSize, streamSize, result.data(), size))
        FailInvalidData();
    result.m_size = size;
    return result;
}

// The memory is exactly `count` bytes afterwards, which must be at least the size.
void VoByteArray::reallocate(std::size_t count)
{
    char* const moved = static_cast<char*>(std::realloc(m_bytes.get(), count));
    if (!moved)
        vo::detail::ThrowBadAlloc("byte array");
    static_cast<void>(m_bytes.release());
    m_bytes.reset(moved);
    m_allocated = count;
}

bool operator==(const VoByteArray& a, const VoByteArray& b) noexcept
{
    return a.m_size == b.m_size && (a.m_size == 0 || std::memcmp(a.cdata(), b.cdata(), a.m_size) == 0);
}

bool operator!=(const VoByteArray& a, const VoByteArray& b) noexcept
{
    return !(a == b);
}

std::ostream& operator<<(std::ostream& stream, const VoByteArray& array)
{
    constexpr std::size_t shown = 32;
    constexpr char digits[] = "0123456789abcdef";
    std::string text = std::to_string(array.size()) + " bytes";
    for (std::size_t i = 0; i < std::min(array.size(), shown); ++i) {
        const auto byte = static_cast<unsigned char>(array[i]);
        text += {i == 0 ? ':' : ' ', digits[byte >> 4], digits[byte & 15]};
    }
    return stream << text << (array.size() > shown ? " ..." : "");
}

std::size_t std::hash<VoByteArray>::operator()(const VoByteArray& array) const noexcept
{
    return std::hash<std::string_view>()(array.isEmpty() ? std::string_view()
                                                         : std::string_view(array.data(), array.size()));
}
