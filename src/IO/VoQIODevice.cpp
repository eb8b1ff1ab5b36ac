#include <IO/VoQIODevice.h>

#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#include <QtCore/QString>

#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr std::size_t BlockSize = 32768;

// The mode in which the device serves Qt's; Closed when it is to be neither read nor written.
VoIODevice::Mode DeviceMode(QIODevice::OpenMode mode)
{
    const bool reads = mode & QIODevice::ReadOnly;
    const bool writes = mode & QIODevice::WriteOnly;
    if (reads)
        return writes ? VoIODevice::ReadWrite : VoIODevice::Read;
    if (writes)
        return mode & QIODevice::Append ? VoIODevice::Append : VoIODevice::Write;
    return VoIODevice::Closed;
}

// Whether a device that is open already can serve the wanted mode.
bool Fits(VoIODevice::Mode present, VoIODevice::Mode wanted)
{
    if (present == wanted || present == VoIODevice::ReadWrite)
        return true;
    const bool writes = present == VoIODevice::Write || present == VoIODevice::Append;
    return writes && (wanted == VoIODevice::Write || wanted == VoIODevice::Append);
}

} // namespace

struct VoQIODevice::Private
{
    enum class Transfer
    {
        None,
        Read,
        Write
    };

    explicit Private(VoIODevice& wrapped)
        : device(wrapped)
    {
    }

    VoIODevice& device;
    bool opened = false;              // by the adapter, which then closes it
    std::unique_ptr<char[]> gathered; // written bytes that the device has not got yet
    std::size_t gatheredCount = 0;
    qint64 position = 0;            // where Qt believes the device to be, gathered bytes included
    Transfer last = Transfer::None; // a device has two places, Qt has one: it is carried over when this changes
    std::exception_ptr failure;
};

VoQIODevice::VoQIODevice(VoIODevice& device)
    : m_private(std::make_unique<Private>(device))
{
}

VoQIODevice::~VoQIODevice()
{
    VoQIODevice::close();
}

bool VoQIODevice::open(OpenMode mode)
{
    if (isOpen()) {
        setErrorString(QStringLiteral("Device already open"));
        return false;
    }
    if (mode & Append)
        mode |= WriteOnly;
    m_private->failure = nullptr;
    m_private->gatheredCount = 0;
    m_private->position = 0;
    m_private->last = Private::Transfer::None;
    return attach(mode) && QIODevice::open(mode);
}

void VoQIODevice::close()
{
    if (!isOpen())
        return;
    flush();
    detach();
    const QString error = m_private->failure ? errorString() : QString();
    QIODevice::close();
    setErrorString(error);
}

bool VoQIODevice::flush()
{
    const std::size_t count = std::exchange(m_private->gatheredCount, 0);
    return count == 0 || passOn(m_private->gathered.get(), count);
}

bool VoQIODevice::seek(qint64 position)
{
    if (m_private->failure || !flush() || !QIODevice::seek(position))
        return false;
    try {
        if (isReadable())
            m_private->device.seek_read(static_cast<std::size_t>(position));
        if (isWritable())
            m_private->device.seek_write(static_cast<std::size_t>(position));
    } catch (...) {
        keepException();
        return false;
    }
    m_private->position = position;
    m_private->last = Private::Transfer::None;
    return true;
}

bool VoQIODevice::atEnd() const
{
    if (!isReadable())
        return true;
    if (pos() != m_private->position)
        return false; // Qt has read ahead
    // Logically const: what was written only goes where it belongs earlier than it would have.
    if (!const_cast<VoQIODevice*>(this)->prepareRead())
        return false; // the next read tells
    try {
        return m_private->device.atEnd();
    } catch (...) {
        return false; // the next read tells
    }
}

bool VoQIODevice::hasFailed() const
{
    return m_private->failure != nullptr;
}

void VoQIODevice::rethrow() const
{
    if (m_private->failure)
        std::rethrow_exception(m_private->failure);
}

qint64 VoQIODevice::readData(char* data, qint64 maximumSize)
{
    if (!prepareRead())
        return -1;
    if (maximumSize <= 0)
        return 0;
    try {
        const std::size_t taken = m_private->device.readInto(data, static_cast<std::size_t>(maximumSize));
        m_private->position += static_cast<qint64>(taken);
        return static_cast<qint64>(taken);
    } catch (...) {
        keepException();
        return -1;
    }
}

qint64 VoQIODevice::writeData(const char* data, qint64 size)
{
    if (m_private->failure)
        return -1;
    if (size <= 0)
        return 0;
    if (!prepareWrite())
        return -1;
    const auto count = static_cast<std::size_t>(size);
    if (count > BlockSize - m_private->gatheredCount && !flush())
        return -1;
    if (count >= BlockSize) {
        if (!passOn(data, count))
            return -1;
    } else {
        if (!m_private->gathered)
            m_private->gathered.reset(new char[BlockSize]);
        std::memcpy(m_private->gathered.get() + m_private->gatheredCount, data, count);
        m_private->gatheredCount += count;
    }
    m_private->position += size;
    return size;
}

bool VoQIODevice::attach(OpenMode mode)
{
    const VoIODevice::Mode wanted = DeviceMode(mode);
    VoIODevice& device = m_private->device;
    if (device.isOpen()) {
        m_private->opened = false;
        if (wanted != VoIODevice::Closed && Fits(device.mode(), wanted))
            return true;
        setErrorString(QStringLiteral("Device already open"));
        return false;
    }
    try {
        m_private->opened = device.open(wanted);
        if (!m_private->opened)
            setErrorString(device.lastError().toQString());
        return m_private->opened;
    } catch (...) {
        keepException();
        return false;
    }
}

void VoQIODevice::detach()
{
    if (!std::exchange(m_private->opened, false))
        return;
    try {
        m_private->device.close();
    } catch (...) {
        keepException();
    }
}

// What was written has arrived, and the device reads where Qt believes it to be.
bool VoQIODevice::prepareRead()
{
    if (m_private->failure || !flush())
        return false;
    try {
        if (std::exchange(m_private->last, Private::Transfer::Read) == Private::Transfer::Write)
            m_private->device.seek_read(static_cast<std::size_t>(m_private->position));
        return true;
    } catch (...) {
        keepException();
        return false;
    }
}

// The device writes where Qt believes it to be.
bool VoQIODevice::prepareWrite()
{
    try {
        if (std::exchange(m_private->last, Private::Transfer::Write) == Private::Transfer::Read)
            m_private->device.seek_write(static_cast<std::size_t>(m_private->position));
        return true;
    } catch (...) {
        keepException();
        return false;
    }
}

bool VoQIODevice::passOn(const char* data, std::size_t count)
{
    if (m_private->failure)
        return false;
    try {
        if (m_private->device.writeFrom(data, count) < count)
            throw VoIOException(m_private->device);
        return true;
    } catch (...) {
        keepException();
        return false;
    }
}

// To be called inside a handler. The first exception stays.
void VoQIODevice::keepException() noexcept
{
    if (m_private->failure)
        return;
    m_private->failure = std::current_exception();
    try {
        setErrorString(vo::CurrentExceptionText().toQString());
    } catch (...) {
        // Out of memory for a text that only Qt's side reads; the exception itself is kept.
    }
}
