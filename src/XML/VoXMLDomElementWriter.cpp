#include <XML/VoXMLDomElementWriter.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <XML/detail/XMLDomNamespaces.h>
#include <XML/detail/XMLLimits.h>
#include <XML/detail/XMLNames.h>
#include <XML/detail/XMLText.h>

#include <QtXml/QDomDocument>
#include <QtXml/QDomElement>

#include <unordered_set>
#include <utility>

using namespace vo::detail;

struct VoXMLDomElementWriter::Private
{
    Private(const QDomElement& target, std::size_t targetLevel)
        : element(target)
        , document(target.ownerDocument())
        , level(targetLevel)
    {
    }

    void requireRoomBelow() const;
    std::unique_ptr<VoXMLElementWriter> append(const QDomElement& child, bool isNamed);
    void examineAttributes();
    QString writableAttribute(const VoString& name, const VoString& value, bool hasNamespace);
    QString attributePrefix(const QString& namespaceUri);
    void giveUpPrefix(const QString& prefix);
    void becomePlain();
    void noteAttribute(const VoString& name);

    QDomElement element;
    QDomDocument document;
    std::size_t level; // 1 for a root
    bool isNamedAsItStands = false;

    // Of the attributes examined: their names as they were given, and the prefixes that they declare by themselves.
    int examined = 0;
    std::unordered_set<VoString> names;
    AttributePrefixes prefixes;
};

void VoXMLDomElementWriter::Private::requireRoomBelow() const
{
    if (level >= MaximumXMLLevels)
        throw VoStackLimitException();
}

std::unique_ptr<VoXMLElementWriter> VoXMLDomElementWriter::Private::append(const QDomElement& child, bool isNamed)
{
    std::unique_ptr<VoXMLDomElementWriter> writer(new VoXMLDomElementWriter(child, level + 1));
    writer->m_private->isNamedAsItStands = isNamed;
    element.appendChild(child);
    return writer;
}

// Anew only after somebody else changed the element: one look at all attributes for each one written would take time
// with the square of their number.
void VoXMLDomElementWriter::Private::examineAttributes()
{
    if (element.attributes().count() == examined)
        return;
    names.clear();
    prefixes.clear();
    for (const QDomNode& attribute : AttributesByName(element)) {
        const bool hasNamespace = !attribute.namespaceURI().isEmpty();
        names.insert(FromQtText(hasNamespace ? attribute.localName() : attribute.nodeName()));
        if (hasNamespace)
            prefixes[attribute.prefix()] = attribute.namespaceURI();
    }
    examined = element.attributes().count();
}

// The stream writer's checks in the stream writer's order.
QString VoXMLDomElementWriter::Private::writableAttribute(const VoString& name, const VoString& value,
                                                          bool hasNamespace)
{
    examineAttributes();
    if (names.count(name) > 0)
        throw VoInvalidXMLAttributeName(name);
    QString qtName = RequireAttributeName(name, ToXMLName(name), hasNamespace);
    if (element.hasChildNodes())
        throw VoInvalidXMLOperation("Illegal attribute write");
    if (names.size() >= MaximumXMLAttributes)
        throw VoInvalidXMLOperation("Too many attributes");
    RequireXMLText(value);
    return qtName;
}

QString VoXMLDomElementWriter::Private::attributePrefix(const QString& namespaceUri)
{
    for (const auto& [prefix, declared] : prefixes) {
        if (declared == namespaceUri)
            return prefix;
    }
    const std::optional<QString> known = PrefixOf(element, namespaceUri, false);
    if (known && prefixes.count(*known) == 0)
        return *known;
    return NewPrefix(element, prefixes);
}

// Before a prefix is declared to be something by an attribute: what declares it by itself takes another one.
void VoXMLDomElementWriter::Private::giveUpPrefix(const QString& prefix)
{
    const bool isElements = !element.namespaceURI().isEmpty() && element.prefix() == prefix;
    const auto ofAttributes = prefixes.find(prefix);
    if (!isElements && ofAttributes == prefixes.end())
        return;
    const QString other = NewPrefix(element, prefixes);
    if (isElements && isNamedAsItStands)
        becomePlain();
    else if (isElements)
        element.setPrefix(other);
    if (ofAttributes == prefixes.end())
        return;
    for (QDomNode& attribute : AttributesByName(element)) {
        if (!attribute.namespaceURI().isNull() && attribute.prefix() == prefix)
            attribute.setPrefix(other);
    }
    prefixes[other] = ofAttributes->second;
    prefixes.erase(ofAttributes);
}

// The declaration is about the element itself, whose name was understood by what stands around it.
void VoXMLDomElementWriter::Private::becomePlain()
{
    QDomElement plain = document.createElement(element.nodeName());
    for (const QDomNode& attribute : AttributesByName(element)) {
        if (attribute.namespaceURI().isNull())
            plain.setAttribute(attribute.nodeName(), attribute.nodeValue());
        else
            plain.setAttributeNS(attribute.namespaceURI(), attribute.nodeName(), attribute.nodeValue());
    }
    element.parentNode().replaceChild(plain, element);
    element = plain;
}

void VoXMLDomElementWriter::Private::noteAttribute(const VoString& name)
{
    names.insert(name);
    examined = element.attributes().count();
}

VoXMLDomElementWriter::VoXMLDomElementWriter(const QDomElement& element, std::size_t level)
    : m_private(std::make_unique<Private>(element, level))
{
}

namespace {

std::size_t LevelOf(const QDomElement& element)
{
    if (element.isNull())
        throw VoNullDomElementException();
    std::size_t level = 0;
    for (QDomElement at = element; !at.isNull(); at = at.parentNode().toElement())
        ++level;
    return level;
}

} // namespace

VoXMLDomElementWriter::VoXMLDomElementWriter(const QDomElement& element)
    : VoXMLDomElementWriter(element, LevelOf(element))
{
}

VoXMLDomElementWriter::~VoXMLDomElementWriter() = default;

std::unique_ptr<VoXMLElementWriter> VoXMLDomElementWriter::createElement(const VoString& name,
                                                                         const VoString& namespaceUri)
{
    RequireXMLText(namespaceUri);
    const QString qtName = RequireElementName(name, ToXMLName(name), !namespaceUri.isEmpty());
    m_private->requireRoomBelow();
    return m_private->append(MakeElement(m_private->document, m_private->element, qtName, ToQtText(namespaceUri)),
                             namespaceUri.isEmpty());
}

std::unique_ptr<VoXMLElementWriter> VoXMLDomElementWriter::createElement(const VoString& name)
{
    const QString qtName = RequireElementName(name, ToXMLName(name));
    m_private->requireRoomBelow();
    return m_private->append(MakeElement(m_private->document, m_private->element, qtName), true);
}

const QDomElement& VoXMLDomElementWriter::element() const
{
    return m_private->element;
}

void VoXMLDomElementWriter::onWriteAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri)
{
    if (namespaceUri.isEmpty())
        return onWriteAttribute(name, value);
    RequireXMLText(namespaceUri);
    const QString qtName = m_private->writableAttribute(name, value, true);
    const QString qtUri = ToQtText(namespaceUri);
    const QString prefix = m_private->attributePrefix(qtUri);
    const QString qualifiedName = prefix + QLatin1Char(':') + qtName;
    // The tree would declare the prefix once more, and nobody may declare the one that always stands for itself.
    if (m_private->element.hasAttribute(DeclarationName(prefix)) || prefix == QLatin1String("xml")) {
        m_private->element.setAttribute(qualifiedName, ToQtText(value));
    } else {
        m_private->element.setAttributeNS(qtUri, qualifiedName, ToQtText(value));
        m_private->prefixes[prefix] = qtUri;
    }
    m_private->noteAttribute(name);
}

void VoXMLDomElementWriter::onWriteAttribute(const VoString& name, const VoString& value)
{
    const QString qtName = m_private->writableAttribute(name, value, false);
    if (IsNamespaceDeclaration(qtName))
        m_private->giveUpPrefix(qtName.section(QLatin1Char(':'), 1));
    m_private->element.setAttribute(qtName, ToQtText(value));
    m_private->noteAttribute(name);
}

void VoXMLDomElementWriter::onWriteText(const VoString& text)
{
    if (m_private->element.hasChildNodes())
        throw VoInvalidXMLOperation("Illegal write text call");
    RequireXMLText(text);
    m_private->element.appendChild(m_private->document.createTextNode(ToQtText(text)));
}
