#include <XML/detail/XMLDevice.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <IO/VoIOException.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QString>

#include <utility>

namespace vo::detail {

namespace {

VoSharedPtr<VoIODevice> RequireDevice(VoSharedPtr<VoIODevice> device)
{
    if (!device)
        throw VoNullPointerException();
    return device;
}

} // namespace

bool XMLDeviceAdapter::seek(qint64 position)
{
    m_guard.restart();
    m_hasTooManyAttributes = false;
    return VoQIODevice::seek(position);
}

qint64 XMLDeviceAdapter::readData(char* data, qint64 maximumSize)
{
    if (m_hasTooManyAttributes)
        return -1;
    const qint64 filled = fill(data, maximumSize);
    if (filled <= 0 || m_guard.passes({data, static_cast<std::size_t>(filled)}))
        return filled;
    m_hasTooManyAttributes = true;
    return -1;
}

// Qt takes a block of fewer than four bytes at the start for the whole document, so short reads are made up for here.
qint64 XMLDeviceAdapter::fill(char* data, qint64 maximumSize)
{
    qint64 filled = 0;
    while (filled < maximumSize) {
        const qint64 taken = VoQIODevice::readData(data + filled, maximumSize - filled);
        if (taken <= 0)
            return filled > 0 ? filled : taken;
        filled += taken;
    }
    return filled;
}

XMLDevice::XMLDevice(VoIODevice& device, QIODevice::OpenMode mode)
    : m_device(&device)
    , m_adapter(std::make_shared<XMLDeviceAdapter>(device))
{
    if (!open(mode))
        throwNotOpened();
}

XMLDevice::XMLDevice(VoSharedPtr<VoIODevice> owner)
    : m_owner(RequireDevice(std::move(owner)))
    , m_device(m_owner.get())
    , m_adapter(std::make_shared<XMLDeviceAdapter>(*m_device))
{
}

XMLDevice::XMLDevice(VoSharedPtr<VoIODevice> device, QIODevice::OpenMode mode)
    : XMLDevice(std::move(device))
{
    if (!open(mode))
        throwNotOpened();
}

XMLDevice::XMLDevice(const VoFilePath& file, QIODevice::OpenMode mode)
    : XMLDevice(VoSharedPtr<VoIODevice>(new VoFileDevice(file)))
{
    if (!open(mode))
        throw VoCannotOpenFileException(static_cast<const VoFileDevice&>(*m_device));
}

bool XMLDevice::open(QIODevice::OpenMode mode)
{
    if (m_adapter->open(mode))
        return true;
    m_adapter->rethrow(); // a missing file, for one
    return false;
}

// The device was not asked if it is open already in another mode; then the adapter knows why.
void XMLDevice::throwNotOpened() const
{
    if (m_device->hasError())
        throw VoIOException(*m_device);
    throw VoIOException(FromQtText(m_adapter->errorString()));
}

} // namespace vo::detail
