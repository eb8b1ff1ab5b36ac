#include <XML/VoXMLStreamElementWriter.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <XML/VoXMLStreamWriter.h>

#include <string>

struct VoXMLStreamElementWriter::Private
{
    bool hasAttribute(const VoString& name) const;
    void addAttribute(const VoString& name);

    VoXMLStreamWriter* parent; // null once disabled
    // Names of the attributes written so far, in one text, each ended by a zero byte, which no name can hold.
    std::string attributes;
};

bool VoXMLStreamElementWriter::Private::hasAttribute(const VoString& name) const
{
    for (std::size_t start = 0; start < attributes.size();) {
        const std::size_t end = attributes.find('\0', start);
        if (end - start == name.size() && name == VoStringView(attributes.data() + start, name.size()))
            return true;
        start = end + 1;
    }
    return false;
}

void VoXMLStreamElementWriter::Private::addAttribute(const VoString& name)
{
    attributes.append(name.toStdString()).push_back('\0');
}

VoXMLStreamElementWriter::VoXMLStreamElementWriter(VoXMLStreamWriter* parent)
    : m_private(new Private{parent, {}})
{
    if (!parent)
        throw VoNullPointerException("Invalid parent");
}

VoXMLStreamElementWriter::~VoXMLStreamElementWriter()
{
    if (m_private->parent)
        m_private->parent->closeAfterHandle(this);
}

std::unique_ptr<VoXMLElementWriter> VoXMLStreamElementWriter::createElement(const VoString& name,
                                                                            const VoString& namespaceUri)
{
    requireActive("Invalid attempt to start element");
    return m_private->parent->createElement(name, namespaceUri);
}

std::unique_ptr<VoXMLElementWriter> VoXMLStreamElementWriter::createElement(const VoString& name)
{
    requireActive("Invalid attempt to start element");
    return m_private->parent->createElement(name);
}

void VoXMLStreamElementWriter::disable()
{
    m_private->parent = nullptr;
}

void VoXMLStreamElementWriter::onWriteAttribute(const VoString& name, const VoString& value,
                                                const VoString& namespaceUri)
{
    requireNewAttribute(name);
    m_private->parent->writeAttribute(name, value, namespaceUri);
    m_private->addAttribute(name);
}

void VoXMLStreamElementWriter::onWriteAttribute(const VoString& name, const VoString& value)
{
    requireNewAttribute(name);
    m_private->parent->writeAttribute(name, value);
    m_private->addAttribute(name);
}

void VoXMLStreamElementWriter::onWriteText(const VoString& text)
{
    requireActive("Invalid attempt to write text");
    m_private->parent->writeText(text);
}

void VoXMLStreamElementWriter::requireActive(const char* message) const
{
    if (!m_private->parent || !m_private->parent->isCurrent(this))
        throw VoInvalidXMLOperation(message);
}

void VoXMLStreamElementWriter::requireNewAttribute(const VoString& name) const
{
    requireActive("Invalid attempt to write attribute");
    if (m_private->hasAttribute(name))
        throw VoInvalidXMLAttributeName(name);
}
