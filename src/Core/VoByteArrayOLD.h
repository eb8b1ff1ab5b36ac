#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <memory>

/// A length and a buffer of as many bytes: the older byte array, which Base64 is coded from and to. VoByteArray is its
/// successor everywhere else.
class VOCORE_EXPORT VoByteArrayOLD
{
public:
    VoByteArrayOLD();
    explicit VoByteArrayOLD(std::size_t length);           ///< `length` zero bytes.
    VoByteArrayOLD(const void* bytes, std::size_t length); ///< A copy of `length` bytes.

    VoByteArrayOLD(const VoByteArrayOLD& other);     ///< A copy of the bytes.
    VoByteArrayOLD(VoByteArrayOLD&& other) noexcept; ///< `other` becomes empty.
    ~VoByteArrayOLD();
    VoByteArrayOLD& operator=(const VoByteArrayOLD& other);     ///< Copies the bytes.
    VoByteArrayOLD& operator=(VoByteArrayOLD&& other) noexcept; ///< `other` becomes empty.

    std::size_t length() const { return m_length; }                                     ///< Number of bytes.
    bool isEmpty() const { return m_length == 0; }                                      ///< Whether there is no byte.
    unsigned char* data() { return m_bytes.get(); }                                     ///< The bytes; null when empty.
    const unsigned char* cdata() const { return m_bytes.get(); }                        ///< The bytes; null when empty.
    unsigned char& operator[](std::size_t index) { return m_bytes[index]; }             ///< Unchecked.
    const unsigned char& operator[](std::size_t index) const { return m_bytes[index]; } ///< Unchecked.

    bool operator==(const VoByteArrayOLD& other) const;                              ///< Same length and bytes.
    bool operator!=(const VoByteArrayOLD& other) const { return !(*this == other); } ///< Different length or bytes.

private:
    std::size_t m_length = 0;
    std::unique_ptr<unsigned char[]> m_bytes;
};
