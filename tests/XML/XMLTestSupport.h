#pragma once

#include <VoTestSupport.h>

#include <Core/VoString.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QString>
#include <QtCore/QXmlStreamReader>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>

namespace xmltest {

/// A device in memory that throws VoIOException "device failed" once so many bytes have passed.
class FailingDevice : public VoIODevice
{
public:
    FailingDevice(std::string content, std::size_t bytesBeforeFailure)
        : bytes(std::move(content))
        , m_left(bytesBeforeFailure)
    {
    }

    void seek_read(std::size_t position) override { m_position = position; }
    void seek_write(std::size_t) override {}
    bool atEnd() const override { return m_position >= bytes.size(); }

    std::string bytes; ///< What is read, or what has been written.

protected:
    void onClose() override {}
    bool onOpen(Mode) override { return true; }

    VoString onRead(std::size_t count) override
    {
        const std::size_t taken = std::min({count, bytes.size() - m_position, m_left});
        if (taken == 0 && !atEnd())
            throw VoIOException("device failed");
        m_position += taken;
        m_left -= taken;
        return VoString(bytes.substr(m_position - taken, taken));
    }

    std::size_t onWrite(const VoString& text) override
    {
        const std::size_t taken = std::min(text.size(), m_left);
        bytes.append(text.toStdString(), 0, taken);
        m_left -= taken;
        if (taken < text.size())
            throw VoIOException("device failed");
        return taken;
    }

private:
    std::size_t m_position = 0;
    std::size_t m_left;
};

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
    const auto text = [](const QStringRef& part) { return part.toString().toStdString(); };
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
