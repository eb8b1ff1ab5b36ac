#include <XML/detail/XMLDomWriter.h>

#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <XML/detail/XMLDomNamespaces.h>
#include <XML/detail/XMLNames.h>
#include <XML/detail/XMLText.h>

#include <QtXml/QDomElement>

namespace vo::detail {

namespace {

QString Checked(const QString& text)
{
    RequireXMLText(FromQtText(text));
    return text;
}

// Of a comment or processing instruction, with what follows it up to where it ends.
QString CheckedWithout(const QString& text, QChar following, const QString& end)
{
    if ((text + following).contains(end))
        throw VoInvalidXMLOperation("Text would end its comment or processing instruction: " + FromQtText(text));
    return Checked(text);
}

QString ElementName(const QString& name)
{
    return RequireElementName(FromQtText(name), {name, NameKind(name)});
}

QString AttributeName(const QString& name)
{
    return RequireAttributeName(FromQtText(name), {name, NameKind(name)});
}

} // namespace

XMLDomWriter::XMLDomWriter(XMLDevice device, const VoXMLStreamWriter::AutoFormattingSettings& settings)
    : m_device(std::move(device))
    , m_xml(&m_device.adapter())
{
    m_xml.setAutoFormatting(settings.autoFormatting);
    m_xml.setAutoFormattingIndent(settings.indent);
}

void XMLDomWriter::write(const QDomDocument& document)
{
    m_xml.writeStartDocument();
    QDomNode node = document.firstChild();
    while (!node.isNull()) {
        begin(node);
        if (node.isElement() && node.hasChildNodes()) {
            node = node.firstChild();
            continue;
        }
        end(node);
        while (node.nextSibling().isNull() && node.parentNode().isElement()) {
            node = node.parentNode();
            end(node);
        }
        node = node.nextSibling();
    }
    m_xml.writeEndDocument();
    release();
}

void XMLDomWriter::begin(const QDomNode& node)
{
    if (node.isElement()) {
        beginElement(node.toElement());
    } else if (node.isCDATASection()) { // before text, which it is too
        m_xml.writeCDATA(Checked(node.nodeValue()));
    } else if (node.isText()) {
        writeText(Checked(node.nodeValue()));
    } else if (node.isComment()) {
        m_xml.writeComment(CheckedWithout(node.nodeValue(), QLatin1Char('-'), QStringLiteral("--")));
    } else if (node.isProcessingInstruction() && node.nodeName() != QLatin1String("xml")) { // which Qt's loading keeps
        m_xml.writeProcessingInstruction(ElementName(node.nodeName()),
                                         CheckedWithout(node.nodeValue(), QLatin1Char('?'), QStringLiteral("?>")));
    }
}

void XMLDomWriter::end(const QDomNode& node)
{
    if (!node.isElement())
        return;
    m_xml.writeEndElement();
    m_scope.resize(m_levels.back());
    m_levels.pop_back();
}

// A carriage return as it is would be read as a line feed.
void XMLDomWriter::writeText(const QString& text)
{
    const QStringList lines = text.split(QLatin1Char('\r'));
    m_xml.writeCharacters(lines.first());
    for (int i = 1; i < lines.size(); ++i) {
        m_xml.writeEntityReference(QStringLiteral("#13"));
        m_xml.writeCharacters(lines[i]);
    }
}

void XMLDomWriter::beginElement(const QDomElement& element)
{
    m_levels.push_back(m_scope.size());
    const std::vector<QDomNode> attributes = AttributesByName(element);
    Declarations declared;
    for (const QDomNode& attribute : attributes) {
        if (IsNamespaceDeclaration(attribute.nodeName()))
            declared[attribute.nodeName().section(QLatin1Char(':'), 1)] = attribute.nodeValue();
    }
    if (!element.namespaceURI().isNull())
        requireDeclared(element.prefix(), element.namespaceURI(), declared);
    std::vector<std::pair<QString, QString>> written;
    for (const QDomNode& attribute : attributes) {
        if (!IsNamespaceDeclaration(attribute.nodeName()))
            written.emplace_back(attributeName(attribute, declared), attribute.nodeValue());
    }
    m_xml.writeStartElement(ElementName(element.nodeName()));
    for (const auto& [prefix, namespaceUri] : declared) {
        m_scope.emplace_back(prefix, namespaceUri);
        m_xml.writeAttribute(AttributeName(DeclarationName(prefix)), Checked(namespaceUri));
    }
    for (const auto& [name, value] : written)
        m_xml.writeAttribute(name, Checked(value));
}

// Qt's classes also make attributes in a namespace without a prefix, or with one that means something else.
QString XMLDomWriter::attributeName(const QDomNode& attribute, Declarations& declared)
{
    const QString namespaceUri = attribute.namespaceURI();
    if (namespaceUri.isEmpty() || namespaceUri == XMLOwnNamespace())
        return AttributeName(attribute.nodeName());
    QString prefix = attribute.prefix();
    const auto present = declared.find(prefix);
    const bool isTaken = present != declared.end() && present->second != namespaceUri;
    if (prefix.isEmpty() || isTaken)
        prefix = freePrefix(declared);
    requireDeclared(prefix, namespaceUri, declared);
    return AttributeName(prefix + QLatin1Char(':') + attribute.localName());
}

void XMLDomWriter::requireDeclared(const QString& prefix, const QString& namespaceUri, Declarations& declared) const
{
    const bool isDeclared = declared.count(prefix) > 0;
    if (isDeclared || meaningOf(prefix) != namespaceUri)
        declared[prefix] = namespaceUri;
}

QString XMLDomWriter::freePrefix(const Declarations& declared) const
{
    for (int number = 1;; ++number) {
        QString prefix = QStringLiteral("n%1").arg(number);
        if (declared.count(prefix) == 0 && meaningOf(prefix).isEmpty())
            return prefix;
    }
}

QString XMLDomWriter::meaningOf(const QString& prefix) const
{
    for (auto declaration = m_scope.rbegin(); declaration != m_scope.rend(); ++declaration) {
        if (declaration->first == prefix)
            return declaration->second;
    }
    return {};
}

void XMLDomWriter::release()
{
    m_xml.setDevice(nullptr);
    m_device.adapter().close();
    m_device.adapter().rethrow();
    if (m_xml.hasError())
        throw VoIOException(m_device.device().lastError());
}

} // namespace vo::detail
