#pragma once

#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <IO/VoQIODevice.h>
#include <XML/detail/XMLAttributeGuard.h>

#include <memory>

namespace vo::detail {

/// Presents a document's device to Qt. Reading ends before a start tag of too many attributes is complete, as if the
/// device had failed.
class XMLDeviceAdapter : public VoQIODevice
{
public:
    using VoQIODevice::VoQIODevice;

    bool seek(qint64 position) override;
    bool hasTooManyAttributes() const { return m_hasTooManyAttributes; } ///< Whether that was met.

protected:
    qint64 readData(char* data, qint64 maximumSize) override;

private:
    qint64 fill(char* data, qint64 maximumSize);

    XMLAttributeGuard m_guard;
    bool m_hasTooManyAttributes = false;
};

/// The device of an XML document, opened, presented to Qt, and kept alive where the document owns it.
class XMLDevice
{
public:
    /// How a document's device is opened. The parser reads blocks into a buffer of its own; another one would copy once
    /// more.
    static constexpr QIODevice::OpenMode Reading{QIODevice::ReadOnly | QIODevice::Unbuffered};
    static constexpr QIODevice::OpenMode Writing{QIODevice::WriteOnly};

    /// The caller keeps the device alive. Throws what opening throws, else VoIOException with the reason.
    XMLDevice(VoIODevice& device, QIODevice::OpenMode mode);
    /// Shares the device; as above.
    /// @throws VoNullPointerException when it is null
    XMLDevice(VoSharedPtr<VoIODevice> device, QIODevice::OpenMode mode);
    /// Makes the device of a file. Throws what opening throws, else VoCannotOpenFileException.
    XMLDevice(const VoFilePath& file, QIODevice::OpenMode mode);

    VoIODevice& device() const { return *m_device; }
    XMLDeviceAdapter& adapter() const { return *m_adapter; }

private:
    explicit XMLDevice(VoSharedPtr<VoIODevice> owner); // not opened yet

    bool open(QIODevice::OpenMode mode);
    [[noreturn]] void throwNotOpened() const;

    VoSharedPtr<VoIODevice> m_owner;
    VoIODevice* m_device;
    std::shared_ptr<XMLDeviceAdapter> m_adapter; // goes before the device
};

} // namespace vo::detail
