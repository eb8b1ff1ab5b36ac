#include "XMLTestSupport.h"

#include <Core/VoException.h>
#include <Core/VoXMLException.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLDomElementWriter.h>

#include <QtXml/QDomDocument>

#include <vector>

using xmltest::TextReader;
using xmltest::Written;

namespace {

QDomElement Root(QDomDocument& document, const char* text = "<root/>", bool namespaces = true)
{
    QString error;
    EXPECT_TRUE(document.setContent(QByteArray(text), namespaces, &error)) << error.toStdString();
    return document.documentElement();
}

// What an element shows through the interface.
std::string Shown(VoXMLElementReader& element)
{
    std::string shown = element.name().toStdString();
    for (const VoXMLAttribute& attribute : element.attributes())
        shown += " " + attribute.name().toStdString() + "=" + attribute.value().toStdString();
    shown += "(";
    for (auto child : element.children())
        shown += Shown(*child);
    return shown + ")";
}

TEST(XMLDomWriter, WritesWhatTheStreamWriterWrites)
{
    const auto write = [](VoXMLElementWriter& root) {
        root.writeAttribute("x", "<1>");
        root.createElement("a")->writeText("t & u");
        const auto b = root.createElement("b"); // one attribute each: those of a tree have no order
        b->writeAttributeBase64("d", 1.0);
        b->createElement("c")->writeTextBase64(0.1);
    };
    QDomDocument document;
    VoXMLDomElementWriter writer(Root(document));
    write(writer);
    const std::string dom = document.toString(-1).toStdString();
    TextReader domReader(dom);
    TextReader streamReader(Written([&](VoXMLStreamWriter& w) { write(*w.createElement("root")); }));
    EXPECT_EQ(Shown(*domReader->nextElement()), Shown(*streamReader->nextElement()));
}

TEST(XMLDomWriter, KeepsTheStreamWritersRules)
{
    QDomDocument document;
    VoXMLDomElementWriter root(Root(document));
    root.writeAttribute("x", "1");
    EXPECT_THROW_MSG(root.writeAttribute("X", "2"), VoInvalidXMLAttributeName, "Invalid attribute name: X");
    EXPECT_THROW_MSG(root.writeAttribute("a b", "2"), VoInvalidXMLAttributeName, "Invalid attribute name: a b");
    EXPECT_THROW_MSG(root.writeText(VoString("\x01")), VoInvalidXMLOperation, "Character not allowed in XML");
    root.writeText("t");
    EXPECT_THROW_MSG(root.writeText("u"), VoInvalidXMLOperation, "Illegal write text call");
    EXPECT_THROW_MSG(root.writeAttribute("y", "2"), VoInvalidXMLOperation, "Illegal attribute write");
    EXPECT_THROW_MSG(VoXMLDomElementWriter(QDomElement()), VoNullDomElementException, "Null dom element");
    EXPECT_EQ(document.toString(-1).toStdString(), "<root x=\"1\">t</root>");
}

TEST(XMLDomWriter, PutsElementsAndAttributesInNamespaces)
{
    QDomDocument document;
    VoXMLDomElementWriter root(Root(document));
    auto child = root.createElement("child", "urn:c");
    child->writeAttribute("k", "1", "urn:k");
    const QDomElement written = document.documentElement().firstChildElement();
    EXPECT_EQ(written.namespaceURI(), QStringLiteral("urn:c"));
    EXPECT_EQ(written.attributeNS(QStringLiteral("urn:k"), QStringLiteral("k")), QStringLiteral("1"));
}

TEST(XMLDomReader, ShowsWhatTheStreamReaderShows)
{
    for (const char* text :
         {"<root/>", "<root x='1'>t<a><b/></a><!--c--><a/>u</root>", "<n:root xmlns:n='urn:n'><n:a/></n:root>"}) {
        for (bool namespaces : {true, false}) {
            SCOPED_TRACE(text);
            QDomDocument document;
            VoXMLDomElementReader reader(Root(document, text, namespaces));
            TextReader stream(text);
            EXPECT_EQ(Shown(reader), Shown(*stream->nextElement()));
            EXPECT_EQ(Shown(reader), Shown(reader)); // walks again
        }
    }
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

TEST(XMLDomReader, ShowsAttributesInOrderOfTheirNamesInEveryProcess)
{
    QDomDocument document;
    VoXMLDomElementReader root(Root(document, "<r e='5' b='2' d='4' a='1' c='3'/>"));
    EXPECT_EQ(Shown(root), "r a=1 b=2 c=3 d=4 e=5()");
}

} // namespace
