#include <IO/VoIODevice.h>

#include <Core/VoString.h>
#include <IO/VoIOException.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t RemainingBlock = 128;

bool Permits(VoIODevice::Mode mode, VoIODevice::Mode wanted)
{
    return mode == wanted || mode == VoIODevice::ReadWrite;
}

const VoString& NoError()
{
    static const auto& none = *new VoString; // outlives all static objects
    return none;
}

} // namespace

struct VoIODevice::Private
{
    Mode mode = Closed;
    VoString lastError;
};

VoIODevice::VoIODevice()
    : m_private(std::make_unique<Private>())
{
}

VoIODevice::VoIODevice(VoIODevice&& other) noexcept = default;

VoIODevice& VoIODevice::operator=(VoIODevice&& other) noexcept = default;

VoIODevice::~VoIODevice() = default;

bool VoIODevice::open(Mode mode)
{
    if (isOpen()) {
        setError("Device already open");
        return false;
    }
    if (!onOpen(mode))
        return false;
    state().mode = mode;
    state().lastError = VoString();
    return true;
}

void VoIODevice::close()
{
    if (!isOpen())
        return;
    state().mode = Closed;
    onClose();
}

VoIODevice::Mode VoIODevice::mode() const noexcept
{
    return m_private ? m_private->mode : Closed;
}

bool VoIODevice::isOpen() const noexcept
{
    return mode() != Closed;
}

VoString VoIODevice::read(std::size_t count)
{
    requireReadable();
    return onRead(count);
}

VoString VoIODevice::readAll()
{
    requireReadable();
    return onReadAll();
}

VoString VoIODevice::readLine(std::size_t maximumLength)
{
    requireReadable();
    return onReadLine(maximumLength);
}

VoString VoIODevice::readRemaining()
{
    requireReadable();
    return onReadRemaining();
}

std::size_t VoIODevice::readInto(char* data, std::size_t count)
{
    requireReadable();
    return onReadInto(data, count);
}

void VoIODevice::restart()
{
    requireReadable();
    seek_read(0);
}

std::size_t VoIODevice::write(const VoString& text)
{
    requireWritable();
    return noteWritten(onWrite(text), text.size());
}

std::size_t VoIODevice::writeFrom(const char* data, std::size_t count)
{
    requireWritable();
    return noteWritten(onWriteFrom(data, count), count);
}

bool VoIODevice::hasError() const
{
    return !lastError().isEmpty();
}

const VoString& VoIODevice::lastError() const
{
    return m_private ? m_private->lastError : NoError();
}

VoString VoIODevice::onReadAll()
{
    requireReadable();
    seek_read(0);
    return onReadRemaining();
}

VoString VoIODevice::onReadRemaining()
{
    VoString text;
    while (!atEnd()) {
        const VoString block = read(RemainingBlock);
        if (block.isEmpty())
            break; // the device has less than it thought
        text += block;
    }
    return text;
}

VoString VoIODevice::onReadLine(std::size_t maximumLength)
{
    requireReadable();
    VoString line;
    while (!atEnd()) {
        const VoString byte = read(1);
        line += byte;
        if (byte.isEmpty() || byte[0] == '\n' || line.size() == maximumLength)
            break;
    }
    return line;
}

std::size_t VoIODevice::onReadInto(char* data, std::size_t count)
{
    const VoString block = onRead(count);
    const std::size_t taken = std::min(block.size(), count);
    if (taken != 0)
        std::memcpy(data, block.c_str(), taken);
    return taken;
}

std::size_t VoIODevice::onWriteFrom(const char* data, std::size_t count)
{
    return onWrite(VoString(data, count));
}

void VoIODevice::setError(const VoString& error)
{
    state().lastError = error;
}

// A moved-from device gets a new state when it is used again.
VoIODevice::Private& VoIODevice::state()
{
    if (!m_private)
        m_private = std::make_unique<Private>();
    return *m_private;
}

void VoIODevice::requireReadable() const
{
    if (!Permits(mode(), Read))
        throw VoIOInvalidReadException("Cannot read from IO device");
}

void VoIODevice::requireWritable() const
{
    if (!Permits(mode(), Write) && mode() != Append)
        throw VoIOInvalidWriteException("Cannot write to IO device");
}

std::size_t VoIODevice::noteWritten(std::size_t written, std::size_t wanted)
{
    if (written < wanted)
        setError(VoString(wanted - written) + " bytes were not written");
    return written;
}
