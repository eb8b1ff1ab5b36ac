#include <XML/VoXMLStreamElementWriter.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <XML/VoXMLStreamWriter.h>

#include <vector>

struct VoXMLStreamElementWriter::Private
{
    VoXMLStreamWriter* parent;        // null once disabled
    std::vector<VoString> attributes; // names written so far
};

VoXMLStreamElementWriter::VoXMLStreamElementWriter(VoXMLStreamWriter* parent)
    : d(new Private{parent, {}})
{
    if (!parent)
        throw VoNullPointerException("Invalid parent");
}

VoXMLStreamElementWriter::~VoXMLStreamElementWriter()
{
    if (d->parent)
        d->parent->closeAfterHandle(this);
}

std::unique_ptr<VoXMLElementWriter> VoXMLStreamElementWriter::createElement(const VoString& name,
                                                                            const VoString& namespaceUri)
{
    requireActive("Invalid attempt to start element");
    return d->parent->createElement(name, namespaceUri);
}

std::unique_ptr<VoXMLElementWriter> VoXMLStreamElementWriter::createElement(const VoString& name)
{
    requireActive("Invalid attempt to start element");
    return d->parent->createElement(name);
}

void VoXMLStreamElementWriter::disable()
{
    d->parent = nullptr;
}

void VoXMLStreamElementWriter::onWriteAttribute(const VoString& name, const VoString& value,
                                                const VoString& namespaceUri)
{
    requireNewAttribute(name);
    d->parent->writeAttribute(name, value, namespaceUri);
    d->attributes.push_back(name);
}

void VoXMLStreamElementWriter::onWriteAttribute(const VoString& name, const VoString& value)
{
    requireNewAttribute(name);
    d->parent->writeAttribute(name, value);
    d->attributes.push_back(name);
}

void VoXMLStreamElementWriter::onWriteText(const VoString& text)
{
    requireActive("Invalid attempt to write text");
    d->parent->writeText(text);
}

void VoXMLStreamElementWriter::requireActive(const char* message) const
{
    if (!d->parent || !d->parent->isCurrent(this))
        throw VoInvalidXMLOperation(message);
}

void VoXMLStreamElementWriter::requireNewAttribute(const VoString& name) const
{
    requireActive("Invalid attempt to write attribute");
    for (const VoString& written : d->attributes) {
        if (written.size() == name.size() && written == name)
            throw VoInvalidXMLAttributeName(name);
    }
}
