#pragma once

#include <XML/VoXMLStreamWriter.h>
#include <XML/detail/XMLDevice.h>

#include <QtCore/QXmlStreamWriter>
#include <QtXml/QDomDocument>

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace vo::detail {

/// Writes a DOM tree as a document: attributes in order of their names, each namespace declared where it is needed and
/// nowhere twice. Nothing here recurses.
class XMLDomWriter
{
public:
    XMLDomWriter(XMLDevice device, const VoXMLStreamWriter::AutoFormattingSettings& settings);

    /// Once only.
    /// @throws VoInvalidXMLOperation, VoInvalidXMLAttributeName for what no document can hold, and the device's
    /// failure
    void write(const QDomDocument& document);

private:
    using Declarations = std::map<QString, QString>; // of prefixes

    void begin(const QDomNode& node);
    void end(const QDomNode& node);
    void beginElement(const QDomElement& element);
    void writeText(const QString& text);
    QString attributeName(const QDomNode& attribute, Declarations& declared);
    void requireDeclared(const QString& prefix, const QString& namespaceUri, Declarations& declared) const;
    QString freePrefix(const Declarations& declared) const;
    QString meaningOf(const QString& prefix) const;
    void release();

    XMLDevice m_device;
    QXmlStreamWriter m_xml;
    std::vector<std::pair<QString, QString>> m_scope; // declarations in force, innermost last
    std::vector<std::size_t> m_levels;                // how many of them were before each open element
};

} // namespace vo::detail
