#pragma once

#include <MemoryDevice.h>
#include <VoTestSupport.h>

#include <IO/VoStringDevice.h>
#include <XML/VoXMLDomDocument.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QString>
#include <QtCore/QXmlStreamReader>

#include <cstddef>

namespace xmltest {

using vo::test::MemoryDevice;

/// So many start tags of one name, each in the one before.
inline std::string Nested(std::size_t levels)
{
    std::string document;
    for (std::size_t i = 0; i < levels; ++i)
        document += "<a>";
    return document;
}

/// The tree of a text.
inline VoXMLDomDocument Loaded(const std::string& text)
{
    VoStringDevice device{VoString(text)};
    VoXMLDomDocument document;
    document.load(device);
    return document;
}

/// The document that `write` makes.
inline std::string Written(const std::function<void(VoXMLStreamWriter&)>& write,
                           const VoXMLStreamWriter::AutoFormattingSettings& settings = {})
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device, settings);
    write(writer);
    writer.finishDocument();
    return device.content().toStdString();
}

/// A reader on a text that it keeps.
class TextReader
{
public:
    explicit TextReader(const std::string& text)
        : m_device(VoString(text))
        , m_reader(m_device)
    {
    }

    VoXMLStreamReader* operator->() { return &m_reader; }
    VoXMLStreamReader& operator*() { return m_reader; }

private:
    VoStringDevice m_device;
    VoXMLStreamReader m_reader;
};

/// What a document says to the bare parser, however it spells prefixes, escapes and the order of attributes; with the
/// parser's error, if there is one, at the end.
inline std::string Canonical(const std::string& document)
{
    QXmlStreamReader qt(QByteArray::fromStdString(document));
    const auto text = [](QStringView part) { return part.toString().toStdString(); };
    std::string shown;
    for (int depth = 0; !qt.atEnd();) {
        qt.readNext();
        if (qt.isStartElement()) {
            ++depth;
            shown += "<{" + text(qt.namespaceUri()) + "}" + text(qt.name());
            std::set<std::string> attributes;
            for (const QXmlStreamAttribute& one : qt.attributes())
                attributes.insert(" {" + text(one.namespaceUri()) + "}" + text(one.name()) + "=" + text(one.value()));
            for (const std::string& attribute : attributes)
                shown += attribute;
            shown += ">";
        } else if (qt.isEndElement()) {
            --depth;
            shown += "</>";
        } else if (qt.isComment() || qt.isProcessingInstruction()) {
            shown += "<!" + text(qt.text()) + text(qt.processingInstructionTarget()) +
                     text(qt.processingInstructionData()) + ">";
        } else if (qt.isCharacters() && depth > 0) {
            shown += text(qt.text());
        }
    }
    return shown + qt.errorString().toStdString();
}

} // namespace xmltest
