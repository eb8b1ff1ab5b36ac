#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>

/// An owned sequence of bytes.
///
/// Its size and the memory it has allocated are apart: allocate() reserves without touching the memory, resize() and
/// expandTo() change the size within it or take more. Where memory cannot be had, VoBadAllocException is thrown and the
/// array is unchanged.
class VOCORE_EXPORT VoByteArray
{
public:
    VoByteArray() noexcept;
    explicit VoByteArray(std::size_t size);               ///< `size` zero bytes.
    VoByteArray(const char* bytes, std::size_t count);    ///< A copy of `count` bytes.
    VoByteArray(const VoByteArray& other);                ///< Copies the bytes.
    VoByteArray(VoByteArray&& other) noexcept;            ///< `other` is empty afterwards.
    VoByteArray& operator=(const VoByteArray& other);     ///< Copies the bytes.
    VoByteArray& operator=(VoByteArray&& other) noexcept; ///< `other` is empty afterwards.
    ~VoByteArray();

    /// @name The bytes
    /// Null when nothing was ever allocated. They move when the array grows beyond allocatedSize().
    /// @{
    char* data() noexcept;              ///< The bytes, to be changed.
    const char* data() const noexcept;  ///< The bytes.
    const char* cdata() const noexcept; ///< The bytes.
    /// @}

    std::size_t size() const noexcept;          ///< The number of bytes.
    bool isEmpty() const noexcept;              ///< Whether size() is 0.
    std::size_t allocatedSize() const noexcept; ///< How many bytes the allocated memory can hold.

    char* begin() noexcept { return data(); }                    ///< The first byte, to be changed.
    char* end() noexcept { return data() + size(); }             ///< Past the last byte.
    const char* begin() const noexcept { return data(); }        ///< The first byte.
    const char* end() const noexcept { return data() + size(); } ///< Past the last byte.

    char& operator[](std::size_t index) noexcept;             ///< Unchecked.
    const char& operator[](std::size_t index) const noexcept; ///< Unchecked.

    /// Checked: throws VoIndexOutOfBoundsException(index, size()). @{
    char& at(std::size_t index);
    const char& at(std::size_t index) const;
    /// @}

    /// Sees to it that `count` bytes can be held without allocating again; never less than size(). Size and bytes
    /// stay.
    void allocate(std::size_t count);

    void resize(std::size_t size);                     ///< Keeps the bytes up to `size`; new ones are zero.
    void expandTo(std::size_t size);                   ///< As resize(), but never makes the array shorter.
    void append(const char* bytes, std::size_t count); ///< Adds a copy of the bytes, which must not be the array's own.
    void clear() noexcept;                             ///< Makes the array empty and keeps its memory.

    /// The bytes in Qt's compressed form: their number as four bytes, most significant first, then a zlib stream.
    /// Nothing compresses to four zero bytes. `level` is 0 (store) to 12 (smallest, many times slower than 9); any other
    /// value is 6. The sizes are about those of zlib's levels: of text up to 0.6 % more, of programs 1 % less.
    /// @throws VoOverflowException from 2147483648 bytes on ("Cannot compress byte array as length is beyond maximum
    /// allowed size. Array size " ...)
    VoByteArray compress(int level = -1) const;

    /// Reverses compress(). Memory is taken according to the leading number only after that has been found possible for
    /// the size of the stream, and the stream must give exactly so many bytes; bytes after the stream are ignored.
    ///
    /// An empty array gives an empty array.
    /// @throws VoInvalidConversionException "Cannot decompress byte array as data is invalid"
    /// @throws VoOverflowException like compress() ("Cannot decompress byte array ...")
    VoByteArray decompress() const;

    friend VOCORE_EXPORT bool operator==(const VoByteArray& a, const VoByteArray& b) noexcept; ///< Compares bytes.
    friend VOCORE_EXPORT bool operator!=(const VoByteArray& a, const VoByteArray& b) noexcept; ///< Compares bytes.

private:
    friend class VoByteBuffer; // fills allocated memory without having it cleared first

    struct Free
    {
        void operator()(char* memory) const noexcept;
    };

    void reallocate(std::size_t count);

    std::unique_ptr<char, Free> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_allocated = 0;
};

/// @relates VoByteArray
/// Writes the size and the first bytes in hexadecimal, for messages and tests.
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoByteArray& array);

/// Hash of the bytes.
template <>
struct VOCORE_EXPORT std::hash<VoByteArray>
{
    /// Agrees with ==.
    std::size_t operator()(const VoByteArray& array) const noexcept;
};
