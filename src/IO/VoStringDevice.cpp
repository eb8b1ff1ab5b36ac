#include <IO/VoStringDevice.h>

#include <Core/VoMathsException.h>
#include <Core/VoString.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

struct VoStringDevice::Private
{
    VoString content;
    std::size_t readPosition = 0;
    std::size_t writePosition = 0;

    std::size_t rest() const { return content.size() - std::min(readPosition, content.size()); }
    const char* next() const { return content.c_str() + std::min(readPosition, content.size()); }
};

VoStringDevice::VoStringDevice()
    : m_private(std::make_unique<Private>())
{
}

VoStringDevice::VoStringDevice(const VoString& content)
    : VoStringDevice(VoString(content))
{
}

VoStringDevice::VoStringDevice(VoString&& content)
    : VoStringDevice()
{
    m_private->content = std::move(content);
}

VoStringDevice::VoStringDevice(const char* content)
    : VoStringDevice(VoString(content))
{
}

VoStringDevice::~VoStringDevice() = default;

const VoString& VoStringDevice::content() const
{
    return m_private->content;
}

void VoStringDevice::seek_read(std::size_t position)
{
    m_private->readPosition = position;
}

void VoStringDevice::seek_write(std::size_t position)
{
    m_private->writePosition = position;
}

bool VoStringDevice::atEnd() const
{
    return m_private->rest() == 0;
}

VoString VoStringDevice::onReadRemaining()
{
    return take(m_private->rest());
}

VoString VoStringDevice::onReadLine(std::size_t maximumLength)
{
    std::size_t count = m_private->rest();
    if (maximumLength != 0)
        count = std::min(count, maximumLength);
    const char* const begin = m_private->next();
    if (const void* const newline = std::memchr(begin, '\n', count))
        count = static_cast<std::size_t>(static_cast<const char*>(newline) - begin) + 1;
    return take(count);
}

void VoStringDevice::onClose() {}

bool VoStringDevice::onOpen(Mode mode)
{
    if ((mode & (ReadWrite | Append | Truncate)) == Closed) {
        setError("Failed to open file in given mode");
        return false;
    }
    if ((mode & Truncate) == Truncate)
        m_private->content = VoString();
    m_private->readPosition = 0;
    m_private->writePosition = (mode & Append) == Append ? m_private->content.size() : 0;
    return true;
}

VoString VoStringDevice::onRead(std::size_t count)
{
    return take(std::min(count, m_private->rest()));
}

std::size_t VoStringDevice::onWrite(const VoString& text)
{
    return onWriteFrom(text.c_str(), text.size());
}

std::size_t VoStringDevice::onReadInto(char* data, std::size_t count)
{
    const std::size_t taken = std::min(count, m_private->rest());
    if (taken != 0)
        std::memcpy(data, m_private->next(), taken);
    m_private->readPosition += taken;
    return taken;
}

std::size_t VoStringDevice::onWriteFrom(const char* data, std::size_t count)
{
    if (count == 0)
        return 0;
    std::string& bytes = m_private->content.toStdString();
    std::size_t& position = m_private->writePosition;
    if (count > bytes.max_size() || position > bytes.max_size() - count)
        throw VoOverflowException();
    if (position > bytes.size()) {
        m_private->content.resize(position + count, '\0'); // throws before anything has changed
        std::memcpy(&bytes[position], data, count);
    } else {
        // Overwrites what is there and appends the rest, which grows the memory by leaps.
        bytes.replace(position, count, data, count);
    }
    position += count;
    return count;
}

VoString VoStringDevice::take(std::size_t count)
{
    VoString text(m_private->next(), count);
    m_private->readPosition += count;
    return text;
}
