#include <XML/VoXMLDomElementReader.h>

#include <Core/VoBase64.h>
#include <Core/VoException.h>
#include <Core/VoXMLException.h>
#include <XML/detail/XMLAttributeCollector.h>
#include <XML/detail/XMLDomNamespaces.h>
#include <XML/detail/XMLText.h>

#include <QtXml/QDomElement>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

using namespace vo::detail;

namespace {

// Trees read without namespace processing keep the prefix in the node name.
QString LocalName(const QDomNode& node)
{
    return node.localName().isEmpty() ? node.nodeName().section(QLatin1Char(':'), -1) : node.localName();
}

// By local name; an attribute whose local name is taken by one without a prefix keeps its own.
VoXMLAttributeSet Attributes(const QDomElement& element)
{
    std::vector<QDomNode> attributes = AttributesByName(element);
    attributes.erase(std::remove_if(attributes.begin(), attributes.end(),
                                    [](const QDomNode& node) { return IsNamespaceDeclaration(node.nodeName()); }),
                     attributes.end());
    std::set<QString> taken;
    for (const QDomNode& attribute : attributes) {
        if (LocalName(attribute) == attribute.nodeName())
            taken.insert(attribute.nodeName());
    }
    VoXMLAttributeSet set;
    for (const QDomNode& attribute : attributes) {
        const QString name = attribute.nodeName();
        const QString local = LocalName(attribute);
        const bool isTaken = local != name && !taken.insert(local).second;
        XMLAttributeCollector::Append(set, FromQtText(isTaken ? name : local), FromQtText(attribute.nodeValue()));
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
        if (!m_child)
            throw VoInvalidXMLOperation("NextChild on closed element called");
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

    Iterator begin() override
    {
        if (std::exchange(m_isUsed, true))
            throw VoInvalidUseException("Begin called multiple times on a single use iterator");
        return Iterator(std::make_shared<DomImplementation>(m_parent.firstChildElement()));
    }

    Iterator end() override { return Iterator(nullptr); }

private:
    QDomElement m_parent;
    bool m_isUsed = false;
};

VoXMLDomElementReader::VoXMLDomElementReader(const QDomElement& element)
    : m_private(std::make_unique<Private>())
{
    if (element.isNull())
        throw VoNullDomElementException();
    m_private->element = element;
    m_private->name = FromQtText(LocalName(element));
    m_private->attributes = Attributes(element);
}

VoXMLDomElementReader::~VoXMLDomElementReader() = default;

const VoXMLAttributeSet& VoXMLDomElementReader::attributes() const
{
    return m_private->attributes;
}

VoXMLElementReader::Children& VoXMLDomElementReader::children()
{
    if (!m_private->children)
        m_private->children = std::make_unique<DomChildren>(m_private->element);
    return *m_private->children;
}

bool VoXMLDomElementReader::hasAttribute(const VoString& name) const
{
    return m_private->attributes.hasAttribute(name);
}

const VoString& VoXMLDomElementReader::name() const
{
    return m_private->name;
}

VoString VoXMLDomElementReader::readAttribute(const VoString& name)
{
    return m_private->attributes.readAttribute(name);
}

double VoXMLDomElementReader::readAttributeBase64(const VoString& name) const
{
    return VoStringDoubleBase64Converter().convert(m_private->attributes.readAttribute(name));
}

VoString VoXMLDomElementReader::readText()
{
    return m_private->text();
}

double VoXMLDomElementReader::readTextBase64() const
{
    return VoStringDoubleBase64Converter().convert(m_private->text());
}
