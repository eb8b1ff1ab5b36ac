#include <XML/VoXMLStreamReader.h>

#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLValidator.h>
#include <XML/detail/StreamChildren.h>
#include <XML/detail/XMLReadEngine.h>
#include <XML/detail/XMLText.h>

#include <algorithm>
#include <utility>

using vo::detail::XMLDevice;
using vo::detail::XMLReadEngine;

namespace {

VoXMLStreamReader::TokenType FromQt(QXmlStreamReader::TokenType token)
{
    static_assert(int(VoXMLStreamReader::StartDocument) == int(QXmlStreamReader::StartDocument));
    static_assert(int(VoXMLStreamReader::EntityReference) == int(QXmlStreamReader::EntityReference));
    return token <= QXmlStreamReader::EntityReference ? static_cast<VoXMLStreamReader::TokenType>(token)
                                                      : VoXMLStreamReader::Unknown;
}

const VoFilePath& Validated(const VoFilePath& file, const VoFilePath& schema)
{
    VoXMLValidator(schema).validate(file);
    return file;
}

} // namespace

struct VoXMLStreamReader::Private
{
    explicit Private(XMLDevice device)
        : engine(std::move(device))
    {
    }

    // Lets the reader, its children and its count share one allocation.
    struct HandedOut final : VoXMLStreamElementReader, VoXMLStreamElementReader::StreamChildren
    {
        HandedOut(VoXMLStreamReader* parent, const XMLReadEngine::Element& element)
            : VoXMLStreamElementReader(parent, element)
            , VoXMLStreamElementReader::StreamChildren(parent, element)
        {
        }

        VoXMLElementReader::Children& children() override { return *this; }
    };

    XMLReadEngine::Element find(const VoXMLStreamElementReader* element) const;

    XMLReadEngine engine;
};

// Only elements whose reader has been handed out have one to be found by.
XMLReadEngine::Element VoXMLStreamReader::Private::find(const VoXMLStreamElementReader* element) const
{
    const auto& stack = engine.stack();
    const auto found = std::find_if(stack.rbegin(), stack.rend(),
                                    [&](const auto& open) { return element && open->reader.get() == element; });
    return found == stack.rend() ? nullptr : *found;
}

VoXMLStreamReader::VoXMLStreamReader(VoIODevice& device)
    : m_private(std::make_unique<Private>(XMLDevice(device, XMLDevice::Reading)))
{
}

VoXMLStreamReader::VoXMLStreamReader(VoSharedPtr<VoIODevice> device)
    : m_private(std::make_unique<Private>(XMLDevice(std::move(device), XMLDevice::Reading)))
{
}

VoXMLStreamReader::VoXMLStreamReader(const VoFilePath& file)
    : m_private(std::make_unique<Private>(XMLDevice(file, XMLDevice::Reading)))
{
}

VoXMLStreamReader::VoXMLStreamReader(const VoFilePath& file, const VoFilePath& schema)
    : VoXMLStreamReader(Validated(file, schema))
{
}

VoXMLStreamReader::~VoXMLStreamReader() = default;

VoXMLStreamReader::TokenType VoXMLStreamReader::next()
{
    return FromQt(m_private->engine.next());
}

std::shared_ptr<VoXMLStreamElementReader> VoXMLStreamReader::nextElement()
{
    return m_private->engine.nextStart() ? currentElement() : nullptr;
}

std::shared_ptr<VoXMLStreamElementReader> VoXMLStreamReader::nextElementInElement()
{
    return m_private->engine.nextStartInElement() ? currentElement() : nullptr;
}

std::shared_ptr<VoXMLStreamElementReader> VoXMLStreamReader::scan(const VoString& name)
{
    while (m_private->engine.nextStart()) {
        if (*m_private->engine.stack().back()->name == name)
            return currentElement();
    }
    return nullptr;
}

void VoXMLStreamReader::restart()
{
    m_private->engine.restart();
}

VoString VoXMLStreamReader::readText()
{
    if (m_private->engine.stack().empty())
        throw VoInvalidXMLOperation("ReadText called outside of element");
    const XMLReadEngine::Element current = m_private->engine.stack().back();
    return m_private->engine.directText(current);
}

VoString VoXMLStreamReader::readAsText()
{
    return m_private->engine.remainingMarkup();
}

VoString VoXMLStreamReader::toString()
{
    switch (tokenType()) {
    case StartElement:
        return m_private->engine.currentMarkup();
    case NoToken:
    case StartDocument:
    case EndElement:
        return {};
    default:
        throw VoXMLException(errorString());
    }
}

VoXMLStreamReader::TokenType VoXMLStreamReader::tokenType() const
{
    return FromQt(m_private->engine.qt().tokenType());
}

VoString VoXMLStreamReader::elementName() const
{
    const QXmlStreamReader& qt = m_private->engine.qt();
    const bool isNamed = qt.isStartElement() || qt.isEndElement() || qt.isEntityReference();
    return isNamed ? vo::detail::FromQtText(qt.name()) : VoString();
}

VoString VoXMLStreamReader::errorString() const
{
    return vo::detail::FromQtText(m_private->engine.qt().errorString());
}

VoXMLAttributeSetPtr VoXMLStreamReader::attributes()
{
    return VoXMLAttributeSetPtr(new VoXMLAttributeSet(m_private->engine.attributes()));
}

std::string_view VoXMLStreamReader::openPath() const
{
    const auto& stack = m_private->engine.stack();
    return stack.empty() ? std::string_view() : m_private->engine.path(*stack.back());
}

VoXMLPath VoXMLStreamReader::currentPath() const
{
    return VoXMLPath(VoString(std::string(openPath())));
}

std::shared_ptr<VoXMLStreamElementReader> VoXMLStreamReader::currentElement()
{
    const auto& stack = m_private->engine.stack();
    if (stack.empty())
        throw VoNullXMLStreamElementException();
    const XMLReadEngine::Element& element = stack.back();
    if (!element->reader)
        element->reader = std::make_shared<Private::HandedOut>(this, element);
    return element->reader;
}

std::shared_ptr<VoXMLStreamElementReader>
VoXMLStreamReader::getSharedPointer(const VoXMLStreamElementReader* element) const
{
    const XMLReadEngine::Element found = m_private->find(element);
    if (!found)
        throw VoNullXMLStreamElementException();
    return found->reader;
}

bool VoXMLStreamReader::isActive(const VoXMLStreamElementReader* element) const
{
    const auto& stack = m_private->engine.stack();
    return element && !stack.empty() && stack.back()->reader.get() == element;
}

bool VoXMLStreamReader::isValid(const VoXMLStreamElementReader* element) const
{
    return m_private->find(element) != nullptr;
}

bool VoXMLStreamReader::isValid(const std::shared_ptr<VoXMLStreamElementReader>& element) const
{
    return isValid(element.get());
}

bool VoXMLStreamReader::isValid(std::nullptr_t) const
{
    return false;
}
