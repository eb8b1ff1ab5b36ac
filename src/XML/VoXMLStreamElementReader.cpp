#include <XML/VoXMLStreamElementReader.h>

#include <Core/VoBase64.h>
#include <Core/VoException.h>
#include <Core/VoXMLException.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/detail/StreamChildren.h>
#include <XML/detail/XMLReadEngine.h>

#include <utility>

using vo::detail::XMLElementState;
using vo::detail::XMLReadEngine;

namespace {

constexpr const char* TextOfInactive = "Attempted to read text from non-active element";

std::shared_ptr<VoXMLStreamElementReader> NextChild(VoXMLStreamReader* parent, const XMLReadEngine::Element& element)
{
    return XMLReadEngine::NextChild(element) ? parent->currentElement() : nullptr;
}

std::shared_ptr<XMLElementState> CurrentToken(VoXMLStreamReader* reader)
{
    if (!reader)
        throw VoNullPointerException("Invalid parent");
    auto element = std::make_shared<XMLElementState>();
    element->name = std::make_shared<const VoString>(reader->elementName());
    element->attributes = *reader->attributes();
    return element;
}

} // namespace

class VoXMLStreamElementReader::StreamImplementation : public Children::Iterator::Implementation
{
public:
    StreamImplementation(std::weak_ptr<StreamChildren> range, std::shared_ptr<VoXMLElementReader> child)
        : m_range(std::move(range))
        , m_child(std::move(child))
    {
    }

    std::shared_ptr<VoXMLElementReader> currentChild() override { return m_child; }

    std::shared_ptr<VoXMLElementReader> nextChild() override
    {
        const std::shared_ptr<StreamChildren> range = m_range.lock();
        if (!range)
            throw VoInvalidUseException("No parent object in iterator");
        m_child = range->next();
        return m_child;
    }

private:
    std::weak_ptr<StreamChildren> m_range;
    std::shared_ptr<VoXMLElementReader> m_child;
};

std::shared_ptr<VoXMLStreamElementReader> VoXMLStreamElementReader::StreamChildren::next()
{
    return NextChild(m_parent, m_element);
}

VoXMLElementReader::Children::Iterator VoXMLStreamElementReader::StreamChildren::begin()
{
    if (m_isUsed)
        throw VoInvalidUseException("Begin called multiple times on a single use iterator");
    m_isUsed = true;
    const std::shared_ptr<StreamChildren> self = shared_from_this();
    std::shared_ptr<VoXMLElementReader> first = next();
    return Iterator(std::make_shared<StreamImplementation>(self, std::move(first)));
}

VoXMLStreamElementReader::VoXMLStreamElementReader(VoXMLStreamReader* parent)
    : VoXMLStreamElementReader(parent, CurrentToken(parent))
{
}

VoXMLStreamElementReader::VoXMLStreamElementReader(VoXMLStreamReader* parent, std::shared_ptr<XMLElementState> element)
    : m_parent(parent)
    , m_element(std::move(element))
{
}

VoXMLStreamElementReader::~VoXMLStreamElementReader() = default;

const VoXMLAttributeSet& VoXMLStreamElementReader::attributes() const
{
    return m_element->attributes;
}

VoXMLElementReader::Children& VoXMLStreamElementReader::children()
{
    if (!m_children)
        m_children = std::make_shared<StreamChildren>(m_parent, m_element);
    return *m_children;
}

bool VoXMLStreamElementReader::hasAttribute(const VoString& name) const
{
    return attributes().hasAttribute(name);
}

const VoString& VoXMLStreamElementReader::name() const
{
    return *m_element->name;
}

VoString VoXMLStreamElementReader::readAttribute(const VoString& name)
{
    return attributes().readAttribute(name);
}

double VoXMLStreamElementReader::readAttributeBase64(const VoString& name) const
{
    return VoStringDoubleBase64Converter().convert(attributes().readAttribute(name));
}

VoString VoXMLStreamElementReader::readText()
{
    const XMLReadEngine::Element element = m_element;
    return XMLReadEngine::ReadText(element, TextOfInactive);
}

double VoXMLStreamElementReader::readTextBase64() const
{
    const XMLReadEngine::Element element = m_element;
    return VoStringDoubleBase64Converter().convert(XMLReadEngine::ReadText(element, TextOfInactive));
}

std::shared_ptr<VoXMLStreamElementReader> VoXMLStreamElementReader::nextChild()
{
    const XMLReadEngine::Element element = m_element;
    return NextChild(m_parent, element);
}
