#include <XML/VoXMLDomElementWriter.h>

#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <XML/XMLText.h>

#include <QtXml/QDomDocument>
#include <QtXml/QDomElement>

#include <vector>

using vo::detail::RequireXMLText;
using vo::detail::ToQtText;

struct VoXMLDomElementWriter::Private
{
    explicit Private(const QDomElement& target)
        : element(target)
        , document(target.ownerDocument())
    {
    }

    std::unique_ptr<VoXMLElementWriter> append(QDomElement child);

    QDomElement element;
    QDomDocument document;
};

std::unique_ptr<VoXMLElementWriter> VoXMLDomElementWriter::Private::append(QDomElement child)
{
    element.appendChild(child);
    return std::make_unique<VoXMLDomElementWriter>(child);
}

namespace {

bool HasAttribute(const QDomElement& element, const VoString& name)
{
    const QDomNamedNodeMap attributes = element.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        if (vo::detail::FromQtText(attributes.item(i).nodeName()) == name)
            return true;
    }
    return false;
}

} // namespace

VoXMLDomElementWriter::VoXMLDomElementWriter(const QDomElement& element)
    : d(std::make_unique<Private>(element))
{
    if (element.isNull())
        throw VoNullDomElementException();
}

VoXMLDomElementWriter::~VoXMLDomElementWriter() = default;

std::unique_ptr<VoXMLElementWriter> VoXMLDomElementWriter::createElement(const VoString& name,
                                                                         const VoString& namespaceUri)
{
    RequireXMLText(name);
    RequireXMLText(namespaceUri);
    return d->append(d->document.createElementNS(ToQtText(namespaceUri), ToQtText(name)));
}

std::unique_ptr<VoXMLElementWriter> VoXMLDomElementWriter::createElement(const VoString& name)
{
    RequireXMLText(name);
    return d->append(d->document.createElement(ToQtText(name)));
}

const QDomElement& VoXMLDomElementWriter::element() const
{
    return d->element;
}

void VoXMLDomElementWriter::onWriteAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri)
{
    requireAttribute(name, value);
    RequireXMLText(namespaceUri);
    d->element.setAttributeNS(ToQtText(namespaceUri), ToQtText(name), ToQtText(value));
}

void VoXMLDomElementWriter::onWriteAttribute(const VoString& name, const VoString& value)
{
    requireAttribute(name, value);
    d->element.setAttribute(ToQtText(name), ToQtText(value));
}

void VoXMLDomElementWriter::onWriteText(const VoString& text)
{
    if (d->element.hasChildNodes())
        throw VoInvalidXMLOperation("Illegal write text call");
    RequireXMLText(text);
    d->element.appendChild(d->document.createTextNode(ToQtText(text)));
}

// The stream writer's checks in the stream writer's order.
void VoXMLDomElementWriter::requireAttribute(const VoString& name, const VoString& value) const
{
    if (HasAttribute(d->element, name) || name.containsWhiteSpace())
        throw VoInvalidXMLAttributeName(name);
    if (d->element.hasChildNodes())
        throw VoInvalidXMLOperation("Illegal attribute write");
    RequireXMLText(name);
    RequireXMLText(value);
}
