#include <XML/VoXMLDomElementReader.h>

#include <Core/VoBase64.h>
#include <Core/VoXMLException.h>
#include <XML/XMLText.h>

#include <QtXml/QDomElement>

#include <algorithm>
#include <utility>
#include <vector>

using vo::detail::FromQtText;

namespace {

// Trees read without namespace processing keep the prefix in the node name.
QString LocalName(const QDomNode& node)
{
    return node.localName().isEmpty() ? node.nodeName().section(QLatin1Char(':'), -1) : node.localName();
}

bool IsNamespaceDeclaration(const QString& name)
{
    return name == QLatin1String("xmlns") || name.startsWith(QLatin1String("xmlns:"));
}

// The map's own look-up also finds attributes with a prefix.
bool HasPlainAttribute(const QDomNamedNodeMap& attributes, const QString& name)
{
    for (int i = 0; i < attributes.count(); ++i) {
        if (attributes.item(i).nodeName() == name)
            return true;
    }
    return false;
}

// The map's own order is that of a hash with a random seed: another one in each process.
std::vector<QDomNode> InOrderOfNames(const QDomNamedNodeMap& attributes)
{
    std::vector<QDomNode> nodes;
    nodes.reserve(static_cast<std::size_t>(attributes.count()));
    for (int i = 0; i < attributes.count(); ++i)
        nodes.push_back(attributes.item(i));
    std::sort(nodes.begin(), nodes.end(),
              [](const QDomNode& a, const QDomNode& b) { return a.nodeName() < b.nodeName(); });
    return nodes;
}

// By local name; an attribute whose local name is taken by one without a prefix keeps its own.
VoXMLAttributeSet Attributes(const QDomElement& element)
{
    VoXMLAttributeSet set;
    const QDomNamedNodeMap attributes = element.attributes();
    for (const QDomNode& attribute : InOrderOfNames(attributes)) {
        const QString name = attribute.nodeName();
        if (IsNamespaceDeclaration(name))
            continue;
        const QString local = LocalName(attribute);
        const bool isTaken =
            local != name && (HasPlainAttribute(attributes, local) || set.hasAttribute(FromQtText(local)));
        set.addAttribute(FromQtText(isTaken ? name : local), FromQtText(attribute.nodeValue()));
    }
    return set;
}

VoString FirstText(const QDomElement& element)
{
    for (QDomNode node = element.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isText() || node.isCDATASection())
            return FromQtText(node.nodeValue());
    }
    return {};
}

} // namespace

struct VoXMLDomElementReader::Private
{
    QDomElement element;
    VoString name;
    VoXMLAttributeSet attributes;
    std::unique_ptr<DomChildren> children; // made when first asked for

    VoString text() const;
};

VoString VoXMLDomElementReader::Private::text() const
{
    VoString text = FirstText(element);
    text.trim();
    return text;
}

class VoXMLDomElementReader::DomImplementation : public Children::Iterator::Implementation
{
public:
    explicit DomImplementation(const QDomElement& first) { moveTo(first); }

    std::shared_ptr<VoXMLElementReader> currentChild() override { return m_child; }

    std::shared_ptr<VoXMLElementReader> nextChild() override
    {
        moveTo(m_element.nextSiblingElement());
        return m_child;
    }

private:
    void moveTo(const QDomElement& element)
    {
        m_element = element;
        m_child = element.isNull() ? nullptr : std::make_shared<VoXMLDomElementReader>(element);
    }

    QDomElement m_element;
    std::shared_ptr<VoXMLElementReader> m_child;
};

class VoXMLDomElementReader::DomChildren : public Children
{
public:
    explicit DomChildren(const QDomElement& parent)
        : m_parent(parent)
    {
    }

    Iterator begin() override { return Iterator(std::make_shared<DomImplementation>(m_parent.firstChildElement())); }
    Iterator end() override { return Iterator(nullptr); }

private:
    QDomElement m_parent;
};

VoXMLDomElementReader::VoXMLDomElementReader(const QDomElement& element)
    : d(std::make_unique<Private>())
{
    if (element.isNull())
        throw VoNullDomElementException();
    d->element = element;
    d->name = FromQtText(LocalName(element));
    d->attributes = Attributes(element);
}

VoXMLDomElementReader::~VoXMLDomElementReader() = default;

const VoXMLAttributeSet& VoXMLDomElementReader::attributes() const
{
    return d->attributes;
}

VoXMLElementReader::Children& VoXMLDomElementReader::children()
{
    if (!d->children)
        d->children = std::make_unique<DomChildren>(d->element);
    return *d->children;
}

bool VoXMLDomElementReader::hasAttribute(const VoString& name) const
{
    return d->attributes.hasAttribute(name);
}

const VoString& VoXMLDomElementReader::name() const
{
    return d->name;
}

VoString VoXMLDomElementReader::readAttribute(const VoString& name)
{
    return d->attributes.readAttribute(name);
}

double VoXMLDomElementReader::readAttributeBase64(const VoString& name) const
{
    return VoStringDoubleBase64Converter().convert(d->attributes.readAttribute(name));
}

VoString VoXMLDomElementReader::readText()
{
    return d->text();
}

double VoXMLDomElementReader::readTextBase64() const
{
    return VoStringDoubleBase64Converter().convert(d->text());
}
