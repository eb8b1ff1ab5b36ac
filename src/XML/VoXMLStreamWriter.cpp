#include <XML/VoXMLStreamWriter.h>

#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/detail/XMLDevice.h>
#include <XML/detail/XMLLimits.h>
#include <XML/detail/XMLMarkup.h>
#include <XML/detail/XMLNames.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QString>
#include <QtCore/QXmlStreamWriter>

#include <algorithm>
#include <utility>
#include <vector>

using vo::detail::RequireXMLText;
using vo::detail::ToQtText;
using vo::detail::XMLDevice;

namespace {

enum class State
{
    Initial,
    DocumentStarted,
    ElementOpen,
    InContent,
    ElementClosed,
    DocumentFinished
};

// Empty for Qt to make one. The prefix "xml" has its own meaning, "xmlns" another one.
QString RequirePrefix(const VoString& prefix, const QString& namespaceUri)
{
    const vo::detail::XMLName name = vo::detail::ToXMLName(prefix);
    const bool isOwn = name.text == QLatin1String("xml");
    const bool ownsUri = namespaceUri == vo::detail::XMLOwnNamespace();
    const bool isName = name.kind == vo::detail::XMLNameKind::Local && name.text != QLatin1String("xmlns");
    if (!prefix.isEmpty() && (!isName || isOwn != ownsUri))
        throw VoInvalidXMLOperation("Invalid namespace prefix: " + prefix);
    return name.text;
}

} // namespace

VoXMLStreamWriter::AutoFormattingSettings::AutoFormattingSettings() = default;

VoXMLStreamWriter::AutoFormattingSettings::AutoFormattingSettings(bool formatting)
    : autoFormatting(formatting)
{
}

VoXMLStreamWriter::AutoFormattingSettings::AutoFormattingSettings(bool formatting, std::int32_t indentation)
    : autoFormatting(formatting)
    , indent(indentation)
{
}

using Settings = VoXMLStreamWriter::AutoFormattingSettings;

Settings::AutoFormattingSettings(const AutoFormattingSettings& other) = default;
Settings::AutoFormattingSettings(AutoFormattingSettings&& other) noexcept = default;
Settings& Settings::operator=(const AutoFormattingSettings& other) = default;
Settings& Settings::operator=(AutoFormattingSettings&& other) noexcept = default;
Settings::~AutoFormattingSettings() = default;

struct VoXMLStreamWriter::Private
{
    Private(XMLDevice target, const AutoFormattingSettings& settings)
        : device(std::move(target))
        , xml(&device.adapter())
    {
        xml.setAutoFormatting(settings.autoFormatting);
        xml.setAutoFormattingIndent(settings.indent);
    }

    void rethrowDeviceFailure() const;
    void requireElementOpen(const char* message) const;
    QString requireWritableAttribute(const VoString& name, const VoString& value, bool hasNamespace);
    template <typename WriteStart>
    void open(VoXMLStreamElementWriter* handle, const VoString& name, bool hasNamespace, WriteStart writeStart);
    void closeTop();
    void closeDownTo(const VoXMLStreamElementWriter* element);
    void disableHandles();
    std::exception_ptr release();

    XMLDevice device;
    QXmlStreamWriter xml;
    // Open elements, innermost last; null for one without a handle.
    std::vector<VoXMLStreamElementWriter*> stack;
    vo::detail::XMLWrittenNames names;
    State state = State::Initial;
    std::size_t attributes = 0; // of the element opened last
};

void VoXMLStreamWriter::Private::rethrowDeviceFailure() const
{
    if (device.adapter().hasFailed())
        device.adapter().rethrow();
}

void VoXMLStreamWriter::Private::requireElementOpen(const char* message) const
{
    if (state != State::ElementOpen)
        throw VoInvalidXMLOperation(message);
}

// Returns the name for Qt.
QString VoXMLStreamWriter::Private::requireWritableAttribute(const VoString& name, const VoString& value,
                                                             bool hasNamespace)
{
    rethrowDeviceFailure();
    QString qtName = RequireAttributeName(name, names.decoded(name), hasNamespace);
    requireElementOpen("Illegal attribute write");
    if (attributes == vo::detail::MaximumXMLAttributes)
        throw VoInvalidXMLOperation("Too many attributes");
    RequireXMLText(value);
    ++attributes;
    return qtName;
}

template <typename WriteStart>
void VoXMLStreamWriter::Private::open(VoXMLStreamElementWriter* handle, const VoString& name, bool hasNamespace,
                                      WriteStart writeStart)
{
    rethrowDeviceFailure();
    if (state == State::DocumentFinished)
        throw VoInvalidXMLOperation("Invalid attempt to start element");
    const QString qtName = RequireElementName(name, names.decoded(name), hasNamespace);
    if (stack.size() == stack.capacity())
        stack.reserve(2 * stack.size() + 16);
    writeStart(qtName);
    stack.push_back(handle); // has room, so the stack and Qt's own stay in step
    state = State::ElementOpen;
    attributes = 0;
}

void VoXMLStreamWriter::Private::closeTop()
{
    if (VoXMLStreamElementWriter* handle = stack.back())
        handle->disable();
    stack.pop_back();
    xml.writeEndElement();
    state = stack.empty() ? State::ElementClosed : State::InContent;
}

void VoXMLStreamWriter::Private::closeDownTo(const VoXMLStreamElementWriter* element)
{
    if (!stack.empty() && element && stack.back() == element)
        return closeTop();
    const auto outermost = std::find(stack.begin(), stack.end(), element);
    const auto remaining = static_cast<std::size_t>(outermost - stack.begin());
    while (stack.size() > remaining)
        closeTop();
}

void VoXMLStreamWriter::Private::disableHandles()
{
    for (VoXMLStreamElementWriter* handle : stack) {
        if (handle)
            handle->disable();
    }
    stack.clear();
}

// Hands the rest to the device, closes it and returns its first failure.
std::exception_ptr VoXMLStreamWriter::Private::release()
{
    xml.setDevice(nullptr);
    try {
        device.adapter().close();
        device.device().close(); // one that was open already is left open by the adapter
        rethrowDeviceFailure();
        if (xml.hasError())
            throw VoIOException(device.device());
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

VoXMLStreamWriter::VoXMLStreamWriter(VoIODevice& device, const AutoFormattingSettings& settings)
    : m_private(std::make_unique<Private>(XMLDevice(device, XMLDevice::Writing), settings))
{
}

VoXMLStreamWriter::VoXMLStreamWriter(VoSharedPtr<VoIODevice> device, const AutoFormattingSettings& settings)
    : m_private(std::make_unique<Private>(XMLDevice(std::move(device), XMLDevice::Writing), settings))
{
}

VoXMLStreamWriter::VoXMLStreamWriter(const VoFilePath& path, const AutoFormattingSettings& settings)
    : m_private(std::make_unique<Private>(XMLDevice(path, XMLDevice::Writing), settings))
{
}

VoXMLStreamWriter::~VoXMLStreamWriter()
{
    if (m_private->state != State::DocumentFinished)
        m_private->release();
    m_private->disableHandles();
}

void VoXMLStreamWriter::startDocument()
{
    startDocument("1.0");
}

void VoXMLStreamWriter::startDocument(const VoString& version)
{
    m_private->rethrowDeviceFailure();
    if (m_private->state != State::Initial)
        throw VoInvalidXMLOperation("Attempting to create document when already created");
    RequireXMLText(version);
    m_private->xml.writeStartDocument(ToQtText(version));
    m_private->state = State::DocumentStarted;
}

void VoXMLStreamWriter::startElement(const VoString& name)
{
    m_private->open(nullptr, name, false, [this](const QString& qtName) { m_private->xml.writeStartElement(qtName); });
}

std::unique_ptr<VoXMLStreamElementWriter> VoXMLStreamWriter::createElement(const VoString& name)
{
    auto handle = std::make_unique<VoXMLStreamElementWriter>(this);
    m_private->open(handle.get(), name, false,
                    [this](const QString& qtName) { m_private->xml.writeStartElement(qtName); });
    return handle;
}

std::unique_ptr<VoXMLStreamElementWriter> VoXMLStreamWriter::createElement(const VoString& name,
                                                                           const VoString& namespaceUri)
{
    if (namespaceUri.isEmpty())
        return createElement(name);
    RequireXMLText(namespaceUri);
    auto handle = std::make_unique<VoXMLStreamElementWriter>(this);
    m_private->open(handle.get(), name, true,
                    [&](const QString& qtName) { m_private->xml.writeStartElement(ToQtText(namespaceUri), qtName); });
    return handle;
}

void VoXMLStreamWriter::writeAttribute(const VoString& name, const VoString& value)
{
    const QString qtName = m_private->requireWritableAttribute(name, value, false);
    m_private->xml.writeAttribute(qtName, ToQtText(value));
}

void VoXMLStreamWriter::writeAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri)
{
    if (namespaceUri.isEmpty()) // Qt would declare the default namespace, once for each such attribute
        return writeAttribute(name, value);
    RequireXMLText(namespaceUri);
    const QString qtName = m_private->requireWritableAttribute(name, value, true);
    m_private->xml.writeAttribute(ToQtText(namespaceUri), qtName, ToQtText(value));
}

void VoXMLStreamWriter::writeText(const VoString& text)
{
    m_private->rethrowDeviceFailure();
    m_private->requireElementOpen("Illegal write text call");
    RequireXMLText(text);
    m_private->xml.writeCharacters(ToQtText(text));
    m_private->state = State::InContent;
}

void VoXMLStreamWriter::writeNamespace(const VoString& namespaceUri, const VoString& prefix)
{
    m_private->rethrowDeviceFailure();
    RequireXMLText(namespaceUri);
    const QString qtUri = ToQtText(namespaceUri);
    m_private->xml.writeNamespace(qtUri, RequirePrefix(prefix, qtUri));
}

void VoXMLStreamWriter::writeDefaultNamespace(const VoString& namespaceUri)
{
    m_private->rethrowDeviceFailure();
    RequireXMLText(namespaceUri);
    m_private->xml.writeDefaultNamespace(ToQtText(namespaceUri));
}

void VoXMLStreamWriter::finishElement()
{
    m_private->rethrowDeviceFailure();
    if (!m_private->stack.empty())
        m_private->closeTop();
}

void VoXMLStreamWriter::finishElement(const VoXMLStreamElementWriter* element)
{
    m_private->rethrowDeviceFailure();
    m_private->closeDownTo(element);
}

void VoXMLStreamWriter::closeAfterHandle(const VoXMLStreamElementWriter* element) noexcept
{
    try {
        m_private->closeDownTo(element);
    } catch (...) {
        // Only memory can run out here; finishDocument() closes what stays open.
    }
}

void VoXMLStreamWriter::finishDocument()
{
    if (m_private->state == State::DocumentFinished)
        return;
    m_private->xml.writeEndDocument();
    m_private->state = State::DocumentFinished;
    const std::exception_ptr failure = m_private->release();
    m_private->disableHandles();
    if (failure)
        std::rethrow_exception(failure);
}

bool VoXMLStreamWriter::isCurrent(const VoXMLStreamElementWriter* element) const
{
    return m_private->stack.empty() ? element == nullptr : m_private->stack.back() == element;
}

void vo::detail::XMLMarkup::Write(VoXMLStreamWriter& writer, const char* markup, std::size_t size)
{
    VoXMLStreamWriter::Private& document = *writer.m_private;
    document.rethrowDeviceFailure();
    if (document.stack.empty())
        throw VoInvalidXMLOperation("Illegal write text call");
    if (document.state == State::ElementOpen)
        document.xml.writeCharacters(QString()); // ends the start tag; Qt gathers nothing else
    document.state = State::InContent;
    document.device.adapter().write(markup, static_cast<qint64>(size));
    document.rethrowDeviceFailure();
}
