#include "XMLTestSupport.h"

#include <Words.h>

#include <FileSystem/VoFilePath.h>
#include <XML/VoXMLDomElementReader.h>

#include <QtCore/QBuffer>
#include <QtCore/QXmlStreamWriter>
#include <QtXml/QDomElement>

using xmltest::Canonical;
using xmltest::Loaded;
using xmltest::MemoryDevice;
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
        static const std::vector<std::string> pieces = vo::test::Words(
            "a Z < > & \" ' ]]> \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xEF\xBF\xBD &amp; 0123456789abcdef");
        static const char* const blanks[] = {" x", "\tx", "\nx"};
        std::string made;
        for (unsigned i = 0; i < count; ++i)
            made += below(5) == 0 ? blanks[below(3)] : pieces[below(static_cast<unsigned>(pieces.size()))];
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

// Attributes in order of their names, and the children.
std::string Structure(VoXMLElementReader& element)
{
    std::set<std::string> attributes;
    for (const VoXMLAttribute& attribute : element.attributes())
        attributes.insert(" " + attribute.name().toStdString() + "=" + attribute.value().toStdString());
    std::string shown = element.name().toStdString();
    for (const std::string& attribute : attributes)
        shown += attribute;
    shown += "(";
    for (auto child : element.children())
        shown += Structure(*child);
    return shown + ")";
}

using Texts = std::vector<std::string>;

void CollectTexts(const QDomElement& element, Texts& texts)
{
    texts.push_back(VoXMLDomElementReader(element).readText().toStdString());
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement())
        CollectTexts(child, texts);
}

// Asking an element for a text that it does not have reads it to its end, so each is asked by a reader of its own.
Texts StreamTexts(const std::string& document)
{
    Texts texts;
    for (std::size_t index = 0;; ++index) {
        TextReader reader(document);
        std::shared_ptr<VoXMLStreamElementReader> element = reader->nextElement();
        for (std::size_t i = 0; element && i < index; ++i)
            element = reader->nextElement();
        if (!element)
            return texts;
        texts.push_back(element->readText().toStdString());
    }
}

TEST(XMLRoundTrip, TreesShowWhatTheStreamShowsAndSaveWhatTheyLoaded)
{
    std::vector<std::string> documents = {
        "<root/>",
        "<root x='1'>t<a><b/></a><!--c--><a/>u</root>",
        "<a>   <b/>text</a>",
        "<a> x <b>y</b> z</a>",
        "<a>1<!--c-->2<![CDATA[<3>]]>4</a>",
        "<a x='&#13;&#10;&#9;'>x&#13;y\n&lt;</a>",
        "<?p d?><a><?q?></a><!--e-->",
        "<n:root xmlns:n='urn:n'><n:a n:k='1' k='2'/></n:root>",
        "<r xmlns='urn:d'><e xmlns=''><f/></e><g/></r>",
        "<r xmlns:xs='urn:xs' xmlns:i='urn:i'><v i:type='xs:int' xml:space='preserve'> </v></r>",
        "<p:r xmlns:p='urn:1'><p:a xmlns:p='urn:2' p:x='1'/><p:b/></p:r>",
        "<!DOCTYPE a [<!ENTITY e 'expanded'>]><a>&e;<b/></a>"};
    for (unsigned seed = 0; seed < 60; ++seed)
        documents.push_back(Document(RandomDocument(seed).element(2)));
    for (const std::string& text : documents) {
        SCOPED_TRACE(text);
        VoXMLDomDocument document = Loaded(text);
        const std::string saved = document.toString().toStdString();
        EXPECT_EQ(Canonical(saved), Canonical(text));
        EXPECT_EQ(Loaded(saved).toString().toStdString(), saved);
        VoXMLDomElementReader reader(document.root());
        TextReader stream(text);
        EXPECT_EQ(Structure(reader), Structure(*stream->nextElement()));
        Texts texts;
        CollectTexts(document.root(), texts);
        EXPECT_EQ(texts, StreamTexts(text));
    }
}

TEST(XMLRoundTrip, OutputIsThatOfTheBareWriter)
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        const Element root = RandomDocument(seed).element(4);
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
        EXPECT_EQ(Document(root, {true, 3}), buffer.data().toStdString()) << seed;
    }
}

TEST(XMLRoundTrip, EveryTruncationOfADocumentThrows)
{
    std::string document = "<!DOCTYPE a [<!ENTITY e 'x'>]>" + Document(RandomDocument(3).element(3)).substr(38);
    while (document.back() == '\n')
        document.pop_back();
    ASSERT_NO_THROW(Loaded(document));
    for (std::size_t length = 0; length < document.size(); ++length)
        EXPECT_THROW(Loaded(document.substr(0, length)), VoInvalidXMLException) << length;
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
    MemoryDevice device;
    VoXMLStreamWriter writer(device);
    writer.startElement("root");
    for (int i = 0; i < 50000; ++i) {
        writer.startElement("item");
        writer.writeAttribute("id", "1");
        writer.finishElement();
    }
    writer.finishDocument();
    EXPECT_LE(device.writes, device.content().size() / (16 * 1024) + 1);
}

} // namespace
