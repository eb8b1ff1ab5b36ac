#include "XMLTestSupport.h"

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLElementWriter.h>

#include <QtXml/QDomDocument>

using xmltest::Canonical;
using xmltest::Loaded;
using xmltest::MemoryDevice;

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
    VoXMLDomElementReader prefixed(Root(document, "<r xmlns:s='urn:s' s:id='1' id='2' s:k='3'/>"));
    EXPECT_TRUE(prefixed.readAttribute("id") == "2" && prefixed.readAttribute("s:id") == "1");
    EXPECT_TRUE(prefixed.readAttribute("k") == "3" && prefixed.attributes().size() == 3u);
    EXPECT_THROW_MSG(root.readAttribute("D"), VoUnknownXMLAttributeException, "Unknown attribute: D");
    EXPECT_THROW_MSG(root.readTextBase64(), VoInvalidParameterException, "Invalid string length");
    EXPECT_THROW_MSG(VoXMLDomElementReader(QDomElement()), VoNullDomElementException, "Null dom element");
}

TEST(XMLDomDocument, FailedLoadLeavesTheDocumentAsItWas)
{
    VoXMLDomDocument document = Loaded("<a/>");
    VoStringDevice tooDeep{VoString(xmltest::Nested(1001))};
    EXPECT_THROW(document.load(tooDeep), VoStackLimitException);
    VoStringDevice cut("<b><c></b>");
    EXPECT_THROW_MSG(document.load(cut), VoInvalidXMLException, "Opening and ending tag mismatch.");
    VoStringDevice outside("<!DOCTYPE a SYSTEM 'a.dtd'><a>&e;</a>");
    EXPECT_THROW_MSG(document.load(outside), VoInvalidXMLException, "Entity is not in the document: e");
    MemoryDevice failing("<b><c/></b>", 5);
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
        MemoryDevice failing("", passed);
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
