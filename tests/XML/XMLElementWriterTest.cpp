#include "XMLTestSupport.h"

#include <XML/VoAbstractXMLStreamReadWriteObject.h>
#include <XML/VoXMLDomDocument.h>

#include <QtXml/QDomDocument>

using xmltest::Canonical;

/// @file
/// What the two writers of elements have in common: whatever is written through the interface becomes the same
/// document, by way of a stream or of a tree that is saved.

namespace {

class StreamTarget
{
public:
    std::unique_ptr<VoXMLElementWriter> root() { return m_writer.createElement("root"); }

    std::string finished()
    {
        m_writer.finishDocument();
        return m_device.content().toStdString();
    }

private:
    VoStringDevice m_device;
    VoXMLStreamWriter m_writer{m_device};
};

class TreeTarget
{
public:
    std::unique_ptr<VoXMLElementWriter> root() { return m_document.createRoot("root"); }

    // Saved by the library and by Qt, and once more after having been loaded: all the same document.
    std::string finished()
    {
        const VoString saved = m_document.toString();
        VoStringDevice device(saved);
        VoXMLDomDocument loaded;
        loaded.load(device);
        EXPECT_EQ(Canonical(loaded.toString().toStdString()), Canonical(saved.toStdString()));
        for (const VoXMLDomDocument* document : {&m_document, &loaded})
            EXPECT_EQ(Canonical(document->root().ownerDocument().toString(-1).toStdString()),
                      Canonical(saved.toStdString()));
        return saved.toStdString();
    }

private:
    VoXMLDomDocument m_document;
};

template <typename Target>
std::string Document(const std::function<void(VoXMLElementWriter&)>& write)
{
    Target target;
    write(*target.root());
    return Canonical(target.finished());
}

template <typename Target>
class XMLElementWriter : public testing::Test
{
};

using Targets = testing::Types<StreamTarget, TreeTarget>;
TYPED_TEST_SUITE(XMLElementWriter, Targets);

TYPED_TEST(XMLElementWriter, WritesAttributesTextsAndChildren)
{
    const auto write = [](VoXMLElementWriter& root) {
        root.writeAttribute("v", "<&>\"'\t\n\r");
        root.writeAttributeBase64("d", 0.0);
        root.writeText("<&>\"']]>\t\n \x7F\xEF\xBF\xBD\xEF\xBB\xBF\xEF\xBE\xBF\xF0\x9F\xBF\xBEx\xFFy");
        root.createElement("empty");
        root.createElement("blank")->writeText("");
        root.createElement("\xC3\xA9")->writeTextBase64(0.1);
    };
    EXPECT_EQ(
        Document<TypeParam>(write),
        Canonical("<root v='&lt;&amp;&gt;&quot;&apos;&#9;&#10;&#13;' d='AAAAAAAAAAA='>&lt;&amp;>\"']]&gt;\t\n \x7F"
                  "\xEF\xBF\xBD\xEF\xBB\xBF\xEF\xBE\xBF\xF0\x9F\xBF\xBEx\xEF\xBF\xBDy<empty/><blank/>"
                  "<\xC3\xA9>mpmZmZmZuT8=</\xC3\xA9></root>"));
}

TYPED_TEST(XMLElementWriter, PutsElementsAndAttributesInTheirNamespaces)
{
    const auto write = [](VoXMLElementWriter& root) {
        root.writeAttribute("loc", "v", "urn:xsi");
        root.writeAttribute("none", "w", "");
        root.writeAttribute("also", "w", "");
        root.writeAttribute("lang", "en", "http://www.w3.org/XML/1998/namespace");
        {
            const auto child = root.createElement("child", "urn:c");
            child->writeAttributeBase64("n", 1.0, "urn:c");
            child->writeAttribute("e", "1", "urn:other");
            child->createElement("plain")->createElement("c", "urn:c");
        }
        const auto declaring = root.createElement("d");
        declaring->writeAttribute("xmlns", "urn:d");
        declaring->writeAttribute("xmlns:p", "urn:p");
        declaring->writeAttribute("k", "1", "urn:p");
        declaring->createElement("heir")->createElement("p:e")->writeAttribute("p:k", "2");
        declaring->createElement("heir", "")->createElement("d", "urn:d");
    };
    EXPECT_EQ(Document<TypeParam>(write),
              Canonical("<root xmlns:x='urn:xsi' x:loc='v' none='w' also='w' xml:lang='en'><c:child xmlns:c='urn:c' "
                        "c:n='AAAAAAAA8D8=' xmlns:o='urn:other' o:e='1'><plain><c:c/></plain></c:child>"
                        "<d xmlns='urn:d' xmlns:p='urn:p' p:k='1'><heir><p:e p:k='2'/></heir>"
                        "<heir><d/></heir></d></root>"));
}

TYPED_TEST(XMLElementWriter, RefusesWhatWouldNotBeRead)
{
    const auto write = [](VoXMLElementWriter& root) {
        const char* const forbidden = "Character not allowed in XML";
        for (const char* name : {"", "a b", "a\tb", "1", "-a", "a<", "a&b", "a:b:c", ":a", "a:", "a\"", "\xC3\x97",
                                 "\xF0\x9F\x98\x80", "a\xFF"}) {
            EXPECT_THROW_MSG(root.writeAttribute(name, "1"), VoInvalidXMLAttributeName,
                             "Invalid attribute name: " + VoString(name));
            EXPECT_THROW_MSG(root.createElement(name), VoInvalidXMLOperation,
                             "Invalid element name: " + VoString(name));
        }
        EXPECT_THROW(root.writeAttribute("p:a", "1", "urn:p"), VoInvalidXMLAttributeName);
        EXPECT_THROW(root.createElement("p:a", "urn:p"), VoInvalidXMLOperation);
        EXPECT_THROW_MSG(root.writeAttribute("x", VoString("\x01")), VoInvalidXMLOperation, forbidden);
        EXPECT_THROW_MSG(root.createElement("\x01"), VoInvalidXMLOperation, forbidden);
        EXPECT_THROW_MSG(root.createElement("a", "\x01"), VoInvalidXMLOperation, forbidden);
        root.writeAttribute("x", "1"); // not taken by the refused one
        for (const char* name : {"x", "X"}) {
            EXPECT_THROW_MSG(root.writeAttribute(name, "2"), VoInvalidXMLAttributeName,
                             "Invalid attribute name: " + VoString(name));
            EXPECT_THROW(root.writeAttribute(name, "2", "urn:n"), VoInvalidXMLAttributeName);
        }
        root.writeText("t");
        EXPECT_THROW_MSG(root.writeText("u"), VoInvalidXMLOperation, "Illegal write text call");
        EXPECT_THROW_MSG(root.writeAttribute("y", "1"), VoInvalidXMLOperation, "Illegal attribute write");
        EXPECT_THROW_MSG(root.writeAttribute("y", "1", "urn:n"), VoInvalidXMLOperation, "Illegal attribute write");
        const auto child = root.createElement("a.-1");
        child->createElement("b");
        EXPECT_THROW_MSG(child->writeText("u"), VoInvalidXMLOperation, "Illegal write text call");
    };
    EXPECT_EQ(Document<TypeParam>(write), Canonical("<root x='1'>t<a.-1><b/></a.-1></root>"));
}

TYPED_TEST(XMLElementWriter, RefusesCharactersThatXMLCannotHoldWhereverTheyStand)
{
    std::vector<VoString> forbidden = {"\xEF\xBF\xBE", "\xEF\xBF\xBF", VoString('\0', 1)};
    for (char c = 1; c < 0x20; ++c) {
        if (c != '\t' && c != '\n' && c != '\r')
            forbidden.emplace_back(c, 1);
    }
    const auto write = [&](VoXMLElementWriter& root) {
        for (const VoString& character : forbidden) {
            for (std::size_t before = 0; before < 20; ++before) {
                const VoString text = VoString('x', before) + character + VoString('y', before % 3);
                EXPECT_THROW_MSG(root.writeText(text), VoInvalidXMLOperation, "Character not allowed in XML");
                EXPECT_THROW_MSG(root.writeAttribute("v", text), VoInvalidXMLOperation, "Character not allowed in XML");
            }
        }
    };
    EXPECT_EQ(Document<TypeParam>(write), Canonical("<root/>"));
}

TYPED_TEST(XMLElementWriter, TakesAsManyAttributesAsReadersDo)
{
    const auto write = [](VoXMLElementWriter& root) {
        for (int i = 0; i < 4096; ++i)
            root.writeAttribute("a" + VoString(i), "1", i % 2 == 0 ? "" : "urn:n");
        EXPECT_THROW_MSG(root.writeAttribute("b", "1"), VoInvalidXMLOperation, "Too many attributes");
    };
    const std::string document = Document<TypeParam>(write);
    EXPECT_NE(document.find("a4094=1"), std::string::npos);
    EXPECT_EQ(document.find("b=1"), std::string::npos);
}

TYPED_TEST(XMLElementWriter, ObjectsWriteTheirAttributesBeforeTheirElements)
{
    class Point : public VoAbstractXMLStreamReadWriteObject
    {
    public:
        int typeCode() const override { return 1; }

    protected:
        void writeElements(VoXMLElementWriter& element) const override { element.createElement("x"); }
        void writeAttributes(VoXMLElementWriter& element) const override { element.writeAttribute("id", "1"); }
    };
    EXPECT_EQ(Document<TypeParam>([](VoXMLElementWriter& root) { Point().write(root); }),
              Canonical("<root id='1'><x/></root>"));
}

// The same seed writes the same.
void WriteRandomly(VoXMLElementWriter& element, std::mt19937& random, int levels)
{
    const auto below = [&](unsigned bound) { return static_cast<int>(random() % bound); };
    static const char* const spaces[] = {nullptr, nullptr, "", "urn:a", "urn:b", "urn:c"};
    for (int i = below(4); i > 0; --i) {
        const VoString name = "a" + VoString(i);
        if (const char* space = spaces[below(6)])
            element.writeAttribute(name, VoString(below(100)), space);
        else
            element.writeAttribute(name, VoString(below(100)));
    }
    if (below(4) == 0)
        element.writeAttribute(below(2) == 0 ? "xmlns" : "xmlns:q", spaces[3 + below(3)]);
    if (below(3) == 0)
        element.writeText("t" + VoString(below(100)));
    for (int i = levels > 0 ? below(5) : 0; i > 0; --i) {
        const char* space = spaces[below(6)];
        const auto child = space ? element.createElement("e", space) : element.createElement("e");
        WriteRandomly(*child, random, levels - 1);
    }
}

TEST(XMLElementWriters, AgreeOnRandomDocumentsInNamespaces)
{
    for (unsigned seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        const auto write = [seed](VoXMLElementWriter& root) {
            std::mt19937 random(seed);
            WriteRandomly(root, random, 4);
        };
        EXPECT_EQ(Document<TreeTarget>(write), Document<StreamTarget>(write));
    }
}

} // namespace
