#include <XML/detail/XMLDomNamespaces.h>

#include <XML/detail/XMLNames.h>

#include <QtXml/QDomDocument>

#include <algorithm>

namespace vo::detail {

namespace {

QString PrefixOfName(const QString& qualifiedName)
{
    return qualifiedName.contains(QLatin1Char(':')) ? qualifiedName.section(QLatin1Char(':'), 0, 0) : QString();
}

// What the element itself declares the prefix to be.
std::optional<QString> DeclaredHere(const QDomElement& element, const QString& prefix)
{
    if (!element.namespaceURI().isNull() && element.prefix() == prefix)
        return element.namespaceURI();
    const QString declaration = DeclarationName(prefix);
    if (element.hasAttribute(declaration))
        return element.attribute(declaration);
    return std::nullopt;
}

// Those of declarations by attributes as well as the element's own.
std::vector<QString> PrefixesDeclaredHere(const QDomElement& element)
{
    std::vector<QString> prefixes;
    if (!element.namespaceURI().isNull())
        prefixes.push_back(element.prefix());
    for (const QDomNode& attribute : AttributesByName(element)) {
        const QString name = attribute.nodeName();
        if (IsNamespaceDeclaration(name))
            prefixes.push_back(name.section(QLatin1Char(':'), 1));
    }
    return prefixes;
}

} // namespace

bool IsNamespaceDeclaration(const QString& name)
{
    return name == QLatin1String("xmlns") || name.startsWith(QLatin1String("xmlns:"));
}

QString DeclarationName(const QString& prefix)
{
    return prefix.isEmpty() ? QStringLiteral("xmlns") : QStringLiteral("xmlns:") + prefix;
}

std::vector<QDomNode> AttributesByName(const QDomElement& element)
{
    const QDomNamedNodeMap attributes = element.attributes();
    std::vector<QDomNode> nodes;
    nodes.reserve(static_cast<std::size_t>(attributes.count()));
    for (int i = 0; i < attributes.count(); ++i)
        nodes.push_back(attributes.item(i));
    std::sort(nodes.begin(), nodes.end(),
              [](const QDomNode& a, const QDomNode& b) { return a.nodeName() < b.nodeName(); });
    return nodes;
}

std::optional<QString> NamespaceOf(const QDomElement& element, const QString& prefix)
{
    if (prefix == QLatin1String("xml"))
        return XMLOwnNamespace();
    for (QDomElement at = element; !at.isNull(); at = at.parentNode().toElement()) {
        if (std::optional<QString> declared = DeclaredHere(at, prefix))
            return declared;
    }
    return std::nullopt;
}

std::optional<QString> PrefixOf(const QDomElement& element, const QString& namespaceUri, bool allowsDefault)
{
    if (namespaceUri == XMLOwnNamespace())
        return QStringLiteral("xml");
    for (QDomElement at = element; !at.isNull(); at = at.parentNode().toElement()) {
        for (const QString& prefix : PrefixesDeclaredHere(at)) {
            const bool isUsable = allowsDefault || !prefix.isEmpty();
            if (isUsable && NamespaceOf(element, prefix) == namespaceUri) // not declared anew further in
                return prefix;
        }
    }
    return std::nullopt;
}

QString NewPrefix(const QDomElement& element, const AttributePrefixes& ofAttributes)
{
    for (int number = 1;; ++number) {
        QString prefix = QStringLiteral("n%1").arg(number);
        if (ofAttributes.count(prefix) == 0 && !NamespaceOf(element, prefix))
            return prefix;
    }
}

QDomElement MakeElement(QDomDocument document, const QDomElement& parent, const QString& qualifiedName)
{
    const std::optional<QString> namespaceUri = NamespaceOf(parent, PrefixOfName(qualifiedName));
    return namespaceUri && !namespaceUri->isEmpty() ? document.createElementNS(*namespaceUri, qualifiedName)
                                                    : document.createElement(qualifiedName);
}

QDomElement MakeElement(QDomDocument document, const QDomElement& parent, const QString& name,
                        const QString& namespaceUri)
{
    if (namespaceUri.isEmpty())
        return MakeElement(document, parent, name);
    const std::optional<QString> known = PrefixOf(parent, namespaceUri, true);
    const QString prefix = known ? *known : NewPrefix(parent);
    return document.createElementNS(namespaceUri, prefix.isEmpty() ? name : prefix + QLatin1Char(':') + name);
}

} // namespace vo::detail
