#include "XMLTestSupport.h"

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <XML/VoXMLDomDocument.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLElementWriter.h>

#include <QtXml/QDomDocument>

#include <set>
#include <vector>

using xmltest::Canonical;
using xmltest::FailingDevice;
using xmltest::TextReader;

namespace {

// By Qt's own loading.
QDomElement Root(QDomDocument& document, const char* text)
{
    QString error;
    EXPECT_TRUE(document.setContent(QByteArray(text), true, &error)) << error.toStdString();
    return document.documentElement();
}

TEST(XMLDomReader, ReadsTextsAndDoubles)
{
    QDomDocument document;
    VoXMLDomElementReader root(Root(document, "<r d='AAAAAAAA8D8='><a> x <b>y</b> z</a><c><![CDATA[<c>]]></c><e/>"
                                              "<d>mpmZmZmZuT8=</d></r>"));
    std::vector<std::string> texts;
    for (auto child : root.children())
        texts.push_back(child->readText().toStdString());
    EXPECT_EQ(texts, (std::vector<std::string>{"x", "<c>", "", "mpmZmZmZuT8="}));
    EXPECT_EQ(root.readAttributeBase64("d"), 1.0);
    EXPECT_THROW_MSG(root.readAttribute("D"), VoUnknownXMLAttributeException, "Unknown attribute: D");
    EXPECT_THROW_MSG(root.readTextBase64(), VoInvalidParameterException, "Invalid string length");
    EXPECT_THROW_MSG(VoXMLDomElementReader(QDomElement()), VoNullDomElementException, "Null dom element");
}

TEST(XMLDomReader, AttributesWithPrefixGiveWayToThoseWithout)
{
    QDomDocument document;
    VoXMLDomElementReader root(Root(document, "<r xmlns:s='urn:s' s:id='1' id='2' s:k='3'/>"));
    EXPECT_EQ(root.readAttribute("id"), "2");
    EXPECT_EQ(root.readAttribute("s:id"), "1");
    EXPECT_EQ(root.readAttribute("k"), "3");
    EXPECT_EQ(root.attributes().size(), 3u);
}

VoXMLDomDocument Loaded(const std::string& text)
{
    VoStringDevice device{VoString(text)};
    VoXMLDomDocument document;
    document.load(device);
    return document;
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

TEST(XMLDomDocument, ShowsWhatTheStreamShowsAndSavesWhatItLoaded)
{
    for (const char* text :
         {"<root/>", "<root x='1'>t<a><b/></a><!--c--><a/>u</root>", "<a>   <b/>text</a>", "<a> x <b>y</b> z</a>",
          "<a>1<!--c-->2<![CDATA[<3>]]>4</a>", "<a x='&#13;&#10;&#9;'>x&#13;y\n&lt;</a>", "<?p d?><a><?q?></a><!--e-->",
          "<n:root xmlns:n='urn:n'><n:a n:k='1' k='2'/></n:root>", "<r xmlns='urn:d'><e xmlns=''><f/></e><g/></r>",
          "<r xmlns:xs='urn:xs' xmlns:i='urn:i'><v i:type='xs:int' xml:space='preserve'> </v></r>",
          "<p:r xmlns:p='urn:1'><p:a xmlns:p='urn:2' p:x='1'/><p:b/></p:r>",
          "<!DOCTYPE a [<!ENTITY e 'expanded'>]><a>&e;<b/></a>"}) {
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

TEST(XMLDomDocument, FailedLoadLeavesTheDocumentAsItWas)
{
    VoXMLDomDocument document = Loaded("<a/>");
    std::string deep;
    for (int i = 0; i < 1001; ++i)
        deep += "<a>";
    VoStringDevice tooDeep{VoString(deep)};
    EXPECT_THROW(document.load(tooDeep), VoStackLimitException);
    VoStringDevice cut("<b><c></b>");
    EXPECT_THROW_MSG(document.load(cut), VoInvalidXMLException, "Opening and ending tag mismatch.");
    VoStringDevice outside("<!DOCTYPE a SYSTEM 'a.dtd'><a>&e;</a>");
    EXPECT_THROW_MSG(document.load(outside), VoInvalidXMLException, "Entity is not in the document: e");
    FailingDevice failing("<b><c/></b>", 5);
    EXPECT_THROW_MSG(document.load(failing), VoIOException, "device failed");
    EXPECT_THROW(document.load(VoFilePath("/nowhere/at/all.xml")), VoFileNotFoundException);
    EXPECT_EQ(document.toString(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>\n");
}

TEST(XMLDomDocument, FailedSaveLeavesTheFileAsItWas)
{
    const VoTemporaryDir directory;
    const VoFilePath file(directory.path().path() + "settings.xml");
    VoXMLDomDocument document;
    EXPECT_THROW_MSG(document.save(file), VoNullDomElementException, "Null dom element");
    EXPECT_THROW(document.root(), VoNullDomElementException);
    document.createRoot("a")->createElement("b");
    EXPECT_THROW_MSG(document.createRoot("c"), VoInvalidXMLOperation, "Document has a root element already");
    document.save(file, true);
    QDomElement root = document.root();
    const auto refuses = [&](const QDomNode& bad, const char* message) {
        root.appendChild(bad);
        EXPECT_THROW_MSG(document.save(file), VoInvalidXMLOperation, message);
        root.removeChild(bad);
    };
    QDomDocument tree = root.ownerDocument();
    refuses(tree.createTextNode(QStringLiteral("\x01")), "Character not allowed in XML");
    refuses(tree.createElement(QStringLiteral("b c")), "Invalid element name: b c");
    refuses(tree.createComment(QStringLiteral("-")), "Text would end its comment or processing instruction: -");
    for (std::size_t passed : {std::size_t(0), std::size_t(30)}) {
        FailingDevice failing("", passed);
        EXPECT_THROW_MSG(document.save(failing), VoIOException, "device failed");
    }
    VoXMLDomDocument loaded;
    loaded.load(file);
    EXPECT_EQ(loaded.toString(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\n\t<b/>\n</a>\n");
    EXPECT_EQ(VoFileSystem::NumberFiles(directory.path(), false), 1u); // nothing beside it
}

TEST(XMLDomDocument, SavesWhatQtsClassesMadeInNamespaces)
{
    VoXMLDomDocument document = Loaded("<p:a xmlns:p='urn:p'/>");
    QDomElement root = document.root();
    root.setAttributeNS(QStringLiteral("urn:x"), QStringLiteral("bare"), QStringLiteral("1"));
    root.setAttributeNS(QStringLiteral("urn:y"), QStringLiteral("p:taken"), QStringLiteral("2"));
    EXPECT_EQ(Canonical(document.toString().toStdString()),
              Canonical("<p:a xmlns:p='urn:p' xmlns:x='urn:x' x:bare='1' xmlns:y='urn:y' y:taken='2'/>"));
}

TEST(XMLDomDocument, TreesAreNoDeeperThanTheyCanBeReleased)
{
    VoXMLDomDocument document;
    std::unique_ptr<VoXMLElementWriter> writer = document.createRoot("a");
    for (int level = 1; level < 1000; ++level)
        writer = writer->createElement("a");
    EXPECT_THROW_MSG(writer->createElement("a"), VoStackLimitException, "Stack limit reached");
    Loaded(document.toString().toStdString());
}

} // namespace
