#include <Documents/VoOOXMLWriterDocument.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <IO/VoIODevice.h>
#include <XML/VoXMLStreamWriter.h>

#include <utility>

namespace {

constexpr const char* NoDevice = "Document writer has no valid device";

/// A device that may go while a document still refers to it.
class WeakDevice final : public VoIODevice
{
public:
    explicit WeakDevice(VoWeakPtr<VoIODevice> target)
        : m_target(std::move(target))
    {
    }

    void seek_read(std::size_t) override {}
    void seek_write(std::size_t) override {} // writes at the end
    bool atEnd() const override { return true; }

protected:
    bool onOpen(Mode mode) override
    {
        const VoSharedPtr<VoIODevice> target = lock();
        if (target->isOpen()) {
            if (target->mode() != Read)
                return true;
            setError("Device already open");
            return false;
        }
        if (target->open(mode))
            return true;
        setError(target->lastError());
        return false;
    }

    void onClose() override
    {
        if (const VoSharedPtr<VoIODevice> target = m_target.lock())
            target->close();
    }

    VoString onRead(std::size_t) override { return VoString(); }
    std::size_t onWrite(const VoString& text) override { return lock()->write(text); }

    std::size_t onWriteFrom(const char* data, std::size_t count) override
    {
        const VoSharedPtr<VoIODevice> target = lock();
        const std::size_t written = target->writeFrom(data, count);
        if (written < count)
            setError(target->lastError());
        return written;
    }

private:
    VoSharedPtr<VoIODevice> lock() const
    {
        VoSharedPtr<VoIODevice> target = m_target.lock();
        if (!target)
            throw VoInvalidCallException(NoDevice);
        return target;
    }

    VoWeakPtr<VoIODevice> m_target;
};

} // namespace

struct VoOOXMLWriterDocument::Private
{
    explicit Private(const VoWeakPtr<VoIODevice>& target)
        : device(target)
        , output(target)
    {
        if (!device.expired())
            writer = std::make_unique<VoXMLStreamWriter>(output);
    }

    bool isAlive() const { return writer && !device.expired(); }

    VoWeakPtr<VoIODevice> device;
    WeakDevice output;
    std::unique_ptr<VoXMLStreamWriter> writer; // before what it writes to
};

VoOOXMLWriterDocument::VoOOXMLWriterDocument(VoWeakPtr<VoIODevice> device)
    : m_private(std::make_shared<Private>(device))
{
}

VoOOXMLWriterDocument::VoOOXMLWriterDocument(const VoOOXMLWriterDocument& other) = default;
VoOOXMLWriterDocument::VoOOXMLWriterDocument(VoOOXMLWriterDocument&& other) noexcept = default;
VoOOXMLWriterDocument& VoOOXMLWriterDocument::operator=(const VoOOXMLWriterDocument& other) = default;
VoOOXMLWriterDocument& VoOOXMLWriterDocument::operator=(VoOOXMLWriterDocument&& other) noexcept = default;
VoOOXMLWriterDocument::~VoOOXMLWriterDocument() = default;

void VoOOXMLWriterDocument::onClose() {}

void VoOOXMLWriterDocument::close()
{
    if (!m_private)
        return;
    const std::shared_ptr<Private> state = m_private;
    const auto letGo = [&state] {
        state->writer.reset();
        state->device.reset();
    };
    try {
        if (isAlive()) {
            onClose();
            state->writer->finishDocument();
        }
    } catch (...) {
        letGo();
        throw;
    }
    letGo();
}

bool VoOOXMLWriterDocument::isAlive() const noexcept
{
    return m_private && m_private->isAlive();
}

VoXMLStreamWriter& VoOOXMLWriterDocument::writer()
{
    if (!isAlive())
        throw VoInvalidCallException(NoDevice);
    return *m_private->writer;
}
