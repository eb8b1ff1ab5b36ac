#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>

/// A byte buffer that never holds more than the capacity given when it was made. Memory is taken when the first bytes
/// arrive, and once.
class VOCORE_EXPORT VoByteBuffer
{
public:
    explicit VoByteBuffer(std::size_t capacity);            ///< Empty, for at most `capacity` bytes.
    VoByteBuffer(const VoByteBuffer& other);                ///< Copies the bytes and the capacity.
    VoByteBuffer(VoByteBuffer&& other) noexcept;            ///< `other` is empty and of capacity 0 afterwards.
    VoByteBuffer& operator=(const VoByteBuffer& other);     ///< Copies the bytes and the capacity.
    VoByteBuffer& operator=(VoByteBuffer&& other) noexcept; ///< `other` is empty and of capacity 0 afterwards.
    ~VoByteBuffer();

    /// Appends one byte.
    /// @throws VoBufferOverflowException when the buffer is full
    VoByteBuffer& operator<<(char byte);

    /// Reads from `stream` until the buffer is full or the stream at its end; returns the number of bytes taken.
    /// @throws VoIOException when the stream cannot be read; the buffer is unchanged then
    std::size_t grab(VoFileInputByteStream& stream);

    bool isEmpty() const noexcept;         ///< Whether it holds nothing.
    bool isFull() const noexcept;          ///< Whether it holds as much as it can.
    std::size_t size() const noexcept;     ///< The number of bytes held.
    std::size_t capactiy() const noexcept; ///< The largest number of bytes that can be held; the name is kept as it is.

    char* data() noexcept;             ///< The bytes held, to be changed; null before the first.
    const char* data() const noexcept; ///< The bytes held; null before the first.

    char& operator[](std::size_t index) noexcept;             ///< Unchecked.
    const char& operator[](std::size_t index) const noexcept; ///< Unchecked.

    /// Keeps the bytes up to `size`, new ones are zero.
    /// @throws VoBufferOverflowException beyond the capacity
    void resize(std::size_t size);

    void clear() noexcept; ///< Makes the buffer empty.

    const VoByteArray& bytes() const noexcept; ///< What the buffer holds.
    VoByteArray take();                        ///< Hands out what the buffer holds and leaves it empty.

private:
    VoByteArray m_bytes; // allocated for the whole capacity once it holds anything
    std::size_t m_capacity;
};
