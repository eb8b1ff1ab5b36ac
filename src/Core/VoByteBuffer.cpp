#include <Core/VoByteBuffer.h>

#include <Core/VoException.h>
#include <IO/VoFileByteStream.h>

#include <utility>

VoByteBuffer::VoByteBuffer(std::size_t capacity)
    : m_capacity(capacity)
{
}

VoByteBuffer::VoByteBuffer(const VoByteBuffer& other) = default;

VoByteBuffer::VoByteBuffer(VoByteBuffer&& other) noexcept
    : m_bytes(std::move(other.m_bytes))
    , m_capacity(std::exchange(other.m_capacity, 0))
{
}

VoByteBuffer& VoByteBuffer::operator=(const VoByteBuffer& other)
{
    if (this != &other)
        *this = VoByteBuffer(other);
    return *this;
}

VoByteBuffer& VoByteBuffer::operator=(VoByteBuffer&& other) noexcept
{
    VoByteBuffer taken(std::move(other));
    std::swap(m_bytes, taken.m_bytes);
    std::swap(m_capacity, taken.m_capacity);
    return *this;
}

VoByteBuffer::~VoByteBuffer() = default;

VoByteBuffer& VoByteBuffer::operator<<(char byte)
{
    if (isFull())
        throw VoBufferOverflowException();
    m_bytes.allocate(m_capacity);
    m_bytes.append(&byte, 1);
    return *this;
}

std::size_t VoByteBuffer::grab(VoFileInputByteStream& stream)
{
    if (isFull())
        return 0;
    m_bytes.allocate(m_capacity);
    const std::size_t taken = stream.read(m_bytes.data() + size(), m_capacity - size());
    m_bytes.m_size += taken;
    return taken;
}

bool VoByteBuffer::isEmpty() const noexcept
{
    return m_bytes.isEmpty();
}

bool VoByteBuffer::isFull() const noexcept
{
    return size() == m_capacity;
}

std::size_t VoByteBuffer::size() const noexcept
{
    return m_bytes.size();
}

std::size_t VoByteBuffer::capactiy() const noexcept
{
    return m_capacity;
}

char* VoByteBuffer::data() noexcept
{
    return m_bytes.data();
}

const char* VoByteBuffer::data() const noexcept
{
    return m_bytes.data();
}

char& VoByteBuffer::operator[](std::size_t index) noexcept
{
    return m_bytes[index];
}

const char& VoByteBuffer::operator[](std::size_t index) const noexcept
{
    return m_bytes[index];
}

void VoByteBuffer::resize(std::size_t size)
{
    if (size > m_capacity)
        throw VoBufferOverflowException();
    m_bytes.allocate(m_capacity);
    m_bytes.resize(size);
}

void VoByteBuffer::clear() noexcept
{
    m_bytes.clear();
}

const VoByteArray& VoByteBuffer::bytes() const noexcept
{
    return m_bytes;
}

VoByteArray VoByteBuffer::take()
{
    return std::exchange(m_bytes, VoByteArray());
}
