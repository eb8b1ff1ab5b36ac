#include "XMLTestSupport.h"

#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>

#include <QtCore/QBuffer>
#include <QtCore/QXmlStreamWriter>

#include <random>
#include <utility>
#include <vector>

using xmltest::FailingDevice;
using xmltest::TextReader;
using xmltest::Written;

namespace {

/// A document in memory: what is written, and what is to be read back.
struct Element
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;
    std::vector<Element> children;
};

bool operator==(const Element& a, const Element& b)
{
    return a.name == b.name && a.attributes == b.attributes && a.text == b.text && a.children == b.children;
}

class RandomDocument
{
public:
    explicit RandomDocument(unsigned seed)
        : m_random(seed)
    {
    }

    Element element(int levels)
    {
        Element made;
        made.name = name();
        for (unsigned i = below(4); i > 0; --i)
            made.attributes.emplace_back(name() + std::to_string(i), characters(below(60)));
        made.text = characters(below(3) * below(40));
        if (levels > 0) {
            for (unsigned i = below(5); i > 0; --i)
                made.children.push_back(element(levels - 1));
        }
        return made;
    }

private:
    unsigned below(unsigned bound) { return std::uniform_int_distribution<unsigned>(0, bound - 1)(m_random); }

    std::string name()
    {
        static const char* const names[] = {"a", "item", "long-element.name_1", "\xC3\xA9l\xC3\xA9ment",
                                            "x\xE4\xB8\xAD"};
        return names[below(5)];
    }

    // No carriage return, which a text does not keep, and no blanks at the ends, which reading trims.
    std::string characters(unsigned count)
    {
        static const char* const pieces[] = {"a",
                                             "Z",
                                             "<",
                                             ">",
                                             "&",
                                             "\"",
                                             "'",
                                             " x",
                                             "]]>",
                                             "\tx",
                                             "\nx",
                                             "\xC3\xA9",
                                             "\xE2\x82\xAC",
                                             "\xF0\x9F\x98\x80",
                                             "\xEF\xBF\xBD",
                                             "&amp;",
                                             "0123456789abcdef"};
        std::string made;
        for (unsigned i = 0; i < count; ++i)
            made += pieces[below(std::size(pieces))];
        const std::size_t first = made.find_first_not_of(" \t\n");
        return first == std::string::npos ? "" : made.substr(first);
    }

    std::mt19937 m_random;
};

void Write(const Element& element, VoXMLElementWriter& writer)
{
    for (const auto& [name, value] : element.attributes)
        writer.writeAttribute(name, value);
    if (!element.text.empty())
        writer.writeText(element.text);
    for (const Element& child : element.children)
        Write(child, *writer.createElement(child.name));
}

std::string Document(const Element& root, const VoXMLStreamWriter::AutoFormattingSettings& settings = {})
{
    return Written(
        [&](VoXMLStreamWriter& writer) {
            writer.startDocument();
            Write(root, *writer.createElement(root.name));
        },
        settings);
}

Element Read(VoXMLElementReader& reader)
{
    Element element;
    element.name = reader.name().toStdString();
    for (const VoXMLAttribute& attribute : reader.attributes())
        element.attributes.emplace_back(attribute.name().toStdString(), attribute.value().toStdString());
    for (auto child : reader.children())
        element.children.push_back(Read(*child));
    return element;
}

// Text comes before the children, and an element without text is closed by asking for it: so a document is read twice,
// once for what stands in the elements and once for the texts.
void ReadTexts(VoXMLStreamReader& reader, Element& element)
{
    element.text = element.children.empty() || reader.next() == VoXMLStreamReader::Characters
                       ? reader.currentElement()->readText().toStdString()
                       : "";
    for (Element& child : element.children) {
        if (reader.tokenType() != VoXMLStreamReader::StartElement || &child != &element.children.front())
            reader.nextElement();
        ReadTexts(reader, child);
    }
}

Element Read(const std::string& document)
{
    TextReader reader(document);
    Element root = Read(*reader->nextElement());
    EXPECT_EQ(reader->next(), VoXMLStreamReader::EndDocument);
    reader->restart();
    reader->nextElement();
    ReadTexts(*reader, root);
    return root;
}

TEST(XMLRoundTrip, RandomDocumentsComeBackByTheLibrarysReader)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        const Element root = RandomDocument(seed).element(4);
        EXPECT_TRUE(Read(Document(root)) == root);
    }
}

TEST(XMLRoundTrip, OutputIsThatOfTheBareWriter)
{
    const Element root = RandomDocument(7).element(5);
    QBuffer buffer;
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    QXmlStreamWriter qt(&buffer);
    qt.setAutoFormatting(true);
    qt.setAutoFormattingIndent(3);
    const std::function<void(const Element&)> write = [&](const Element& element) {
        qt.writeStartElement(QString::fromStdString(element.name));
        for (const auto& [name, value] : element.attributes)
            qt.writeAttribute(QString::fromStdString(name), QString::fromStdString(value));
        if (!element.text.empty())
            qt.writeCharacters(QString::fromStdString(element.text));
        for (const Element& child : element.children)
            write(child);
        qt.writeEndElement();
    };
    qt.writeStartDocument();
    write(root);
    qt.writeEndDocument();
    EXPECT_EQ(Document(root, {true, 3}), buffer.data().toStdString());
}

TEST(XMLRoundTrip, EveryTruncationOfADocumentThrows)
{
    std::string document = "<!DOCTYPE a [<!ENTITY e 'x'>]>" + Document(RandomDocument(3).element(3)).substr(38);
    while (document.back() == '\n')
        document.pop_back();
    ASSERT_NO_THROW(Read(document));
    for (std::size_t length = 0; length < document.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_THROW(
            {
                TextReader reader(document.substr(0, length));
                Read(*reader->nextElement());
            },
            VoInvalidXMLException);
    }
}

TEST(XMLRoundTrip, TextsLargerThanAnyBufferPass)
{
    const std::string text(3 << 20, 'x');
    const std::string document = Written([&](VoXMLStreamWriter& writer) {
        auto root = writer.createElement("root");
        root->writeAttribute("value", text);
        root->writeText(text);
    });
    TextReader reader(document);
    auto root = reader->nextElement();
    EXPECT_EQ(root->readAttribute("value").toStdString(), text);
    EXPECT_EQ(root->readText().toStdString(), text);
}

TEST(XMLRoundTrip, OtherEncodingsAreDecoded)
{
    const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>";
    EXPECT_EQ(TextReader(latin)->nextElement()->readText(), "\xC3\xA9");
    const std::string marked = "\xEF\xBB\xBF<a>b</a>";
    EXPECT_EQ(TextReader(marked)->nextElement()->readText(), "b");
    const std::u16string wide = u"\uFEFF<a>\u00E9</a>";
    std::string bytes;
    for (char16_t unit : wide) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    EXPECT_EQ(TextReader(bytes)->nextElement()->readText(), "\xC3\xA9");
}

TEST(XMLRoundTrip, WriterHandsItsDeviceLargeBlocks)
{
    struct CountingDevice : FailingDevice
    {
        CountingDevice()
            : FailingDevice("", std::size_t(-1))
        {
        }
        std::size_t onWrite(const VoString& text) override
        {
            ++writes;
            return FailingDevice::onWrite(text);
        }
        std::size_t writes = 0;
    } device;
    VoXMLStreamWriter writer(device);
    writer.startElement("root");
    for (int i = 0; i < 50000; ++i) {
        writer.startElement("item");
        writer.writeAttribute("id", "1");
        writer.finishElement();
    }
    writer.finishDocument();
    EXPECT_LE(device.writes, device.bytes.size() / (16 * 1024) + 1);
}

} // namespace
