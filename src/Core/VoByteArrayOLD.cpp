#include <Core/VoByteArrayOLD.h>

#include <Core/VoThrow.h>

#include <cstring>
#include <new>
#include <utility>

VoByteArrayOLD::VoByteArrayOLD() = default;

VoByteArrayOLD::VoByteArrayOLD(std::size_t length)
    : m_length(length)
{
    if (length == 0)
        return;
    m_bytes.reset(new (std::nothrow) unsigned char[length]());
    if (!m_bytes)
        vo::detail::ThrowBadAlloc("bytes of an array");
}

VoByteArrayOLD::VoByteArrayOLD(const void* bytes, std::size_t length)
    : VoByteArrayOLD(length)
{
    if (length)
        std::memcpy(m_bytes.get(), bytes, length);
}

VoByteArrayOLD::VoByteArrayOLD(const VoByteArrayOLD& other)
    : VoByteArrayOLD(other.cdata(), other.length())
{
}

VoByteArrayOLD::VoByteArrayOLD(VoByteArrayOLD&& other) noexcept
    : m_length(std::exchange(other.m_length, 0))
    , m_bytes(std::move(other.m_bytes))
{
}

VoByteArrayOLD::~VoByteArrayOLD() = default;

VoByteArrayOLD& VoByteArrayOLD::operator=(const VoByteArrayOLD& other)
{
    if (this != &other)
        *this = VoByteArrayOLD(other);
    return *this;
}

VoByteArrayOLD& VoByteArrayOLD::operator=(VoByteArrayOLD&& other) noexcept
{
    if (this != &other) {
        m_length = std::exchange(other.m_length, 0);
        m_bytes = std::move(other.m_bytes);
    }
    return *this;
}

bool VoByteArrayOLD::operator==(const VoByteArrayOLD& other) const
{
    return m_length == other.m_length && (m_length == 0 || std::memcmp(cdata(), other.cdata(), m_length) == 0);
}
