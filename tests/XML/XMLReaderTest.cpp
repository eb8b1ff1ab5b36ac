#include "XMLTestSupport.h"

#include <FileSystem/VoFilePath.h>
#include <XML/VoStreamXMLReader.h>
#include <XML/VoXMLDomDocument.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLPath.h>

#include <QtXml/QDomElement>

using xmltest::MemoryDevice;
using xmltest::TextReader;

namespace {

using Names = std::vector<std::string>;

constexpr char Closed[] = "NextChild on closed element called";
constexpr char NotActive[] = "Attempted to read text from non-active element";
constexpr char NoElement[] = "Null XML stream element";

Names Listed(const VoXMLAttributeSet& attributes)
{
    Names names;
    for (const VoXMLAttribute& attribute : attributes)
        names.push_back((attribute.name() + "=" + attribute.value()).toStdString());
    return names;
}

void ReadAll(VoXMLStreamReader& reader)
{
    while (reader.next() != VoXMLStreamReader::EndDocument) {
    }
}

TEST(XMLReaderTokens, AreReportedOneByOne)
{
    TextReader reader("<?xml version='1.0'?><!DOCTYPE a><!--c--><?p i?><a>t</a>");
    const std::vector<VoXMLStreamReader::TokenType> expected = {
        VoXMLStreamReader::StartDocument, VoXMLStreamReader::DTD,          VoXMLStreamReader::Comment,
        VoXMLStreamReader::Unknown,       VoXMLStreamReader::StartElement, VoXMLStreamReader::Characters,
        VoXMLStreamReader::EndElement,    VoXMLStreamReader::EndDocument,  VoXMLStreamReader::EndDocument};
    EXPECT_EQ(reader->tokenType(), VoXMLStreamReader::NoToken);
    for (VoXMLStreamReader::TokenType token : expected) {
        EXPECT_EQ(reader->next(), token);
        EXPECT_EQ(reader->tokenType(), token);
    }
    EXPECT_EQ(reader->nextElement(), nullptr);
    TextReader outside("<!DOCTYPE a SYSTEM 'a.dtd'><a>&e;t</a>");
    std::string names;
    while (outside->next() != VoXMLStreamReader::EndDocument)
        names += outside->elementName().toStdString() + ",";
    EXPECT_EQ(names, ",,a,e,,a,");
}

TEST(XMLReaderText, IsTheFirstRunDirectlyInTheElement)
{
    const struct
    {
        const char* document;
        const char* text;
    } rows[] = {
        {"<a> x <b>y</b> z</a>", "x"},
        {"<a><b>y</b> z</a>", "z"},
        {"<a><b><c>y</c>w</b><b/></a>", ""},
        {"<a> <b/>text</a>", ""}, // white space is a run too
        {"<a/>", ""},
        {"<a>1<!--c-->2</a>", "1"},
        {"<a><![CDATA[<x>]]></a>", "<x>"},
        {"<a>&lt;&#65;&amp;</a>", "<A&"},
        {"<a>1\r\n2\r3</a>", "1\n2\n3"},
        {"<!DOCTYPE a [<!ENTITY e 'expanded'>]><a>&e;</a>", "expanded"},
        {"<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>&e;</a>", ""},
        {"<a>\xEF\xBB\xBF\xC3\xA9\xF0\x9F\x98\x80</a>", "\xEF\xBB\xBF\xC3\xA9\xF0\x9F\x98\x80"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.document);
        TextReader reader(row.document);
        auto a = reader->nextElement();
        EXPECT_EQ(a->readText().toStdString(), row.text);
    }
}

TEST(XMLReaderText, MayBeReadTwiceUntilTheElementIsLeft)
{
    TextReader reader("<a> x <b>y</b></a>");
    auto a = reader->nextElement();
    EXPECT_EQ(reader->readText(), " x ");
    EXPECT_EQ(reader->readText(), " x ");
    EXPECT_EQ(a->readText(), "x");
    for (const auto& child : {a->nextChild(), a->nextChild()}) {
        EXPECT_EQ(child ? child->name() : "none", child ? "b" : "none");
        EXPECT_THROW_MSG(a->readText(), VoInvalidXMLOperation, NotActive);
    }
    EXPECT_THROW_MSG(a->readTextBase64(), VoInvalidXMLOperation, NotActive);
    EXPECT_THROW_MSG(reader->readText(), VoInvalidXMLOperation, "ReadText called outside of element");
}

TEST(XMLReaderChildren, MayBeAbandonedAtAnyDepth)
{
    TextReader reader("<a>t<b><c><d/><e/></c></b><!--x--><f>w</f>v</a>");
    auto a = reader->nextElement();
    auto d = a->nextChild()->nextChild()->nextChild();
    EXPECT_EQ(d->name(), "d");
    EXPECT_EQ(a->nextChild()->name(), "f");
    EXPECT_THROW_MSG(d->nextChild(), VoInvalidXMLOperation, Closed);
    EXPECT_EQ(a->nextChild(), nullptr);
    EXPECT_THROW_MSG(a->nextChild(), VoInvalidXMLOperation, Closed);
    EXPECT_EQ(reader->next(), VoXMLStreamReader::EndDocument);
}

TEST(XMLReaderChildren, NobodyGoesOnBehindTheLastOne)
{
    for (const char* document : {"<a/>", "<a>t<b/></a>"}) {
        SCOPED_TRACE(document);
        TextReader reader(document);
        VoStringDevice device(document);
        VoXMLDomDocument tree;
        tree.load(device);
        const std::shared_ptr<VoXMLElementReader> elements[] = {reader->nextElement(),
                                                                std::make_shared<VoXMLDomElementReader>(tree.root())};
        for (const auto& element : elements) {
            auto child = element->children().begin();
            while (child != element->children().end())
                ++child;
            EXPECT_THROW_MSG(++child, VoInvalidXMLOperation, Closed);
            EXPECT_THROW_MSG(++element->children().end(), VoInvalidUseException, "No parent object in iterator");
            EXPECT_THROW_MSG(element->children().begin(), VoInvalidUseException,
                             "Begin called multiple times on a single use iterator");
        }
        // An element that nobody holds ends with its range.
        reader->restart();
        reader->nextElement();
        auto child = reader->currentElement()->children().begin();
        if (*child)
            ++child;
        EXPECT_EQ(*child, nullptr);
        EXPECT_THROW_MSG(++child, VoInvalidUseException, "No parent object in iterator");
    }
}

TEST(XMLReaderElements, AreFoundByStepsAndByName)
{
    TextReader reader("<a>x<b/>y</a>");
    auto a = reader->nextElement();
    reader->next(); // in the text
    EXPECT_EQ(reader->nextElementInElement()->name(), "b");
    EXPECT_EQ(reader->nextElementInElement(), nullptr); // end of b
    EXPECT_TRUE(reader->isActive(a.get()));
    EXPECT_EQ(reader->nextElementInElement(), nullptr); // end of a
    EXPECT_FALSE(reader->isValid(a));
    TextReader items("<a><b><Item n='1'/></b><item n='2'/></a>");
    EXPECT_EQ(items->scan("item")->readAttribute("n"), "1");
    EXPECT_EQ(items->scan("item")->readAttribute("n"), "2");
    EXPECT_EQ(items->scan("item"), nullptr);
}

TEST(XMLReaderElements, QuestionsFollowTheStack)
{
    TextReader reader("<a><b/></a>");
    EXPECT_THROW_MSG(reader->currentElement(), VoNullXMLStreamElementException, NoElement);
    auto a = reader->nextElement();
    auto b = reader->nextElement();
    EXPECT_EQ(reader->currentElement(), b);
    EXPECT_EQ(reader->getSharedPointer(a.get()), a);
    EXPECT_EQ(reader->currentPath(), VoXMLPath({"a", "b"}));
    EXPECT_TRUE(reader->isActive(b.get()) && !reader->isActive(a.get()) && !reader->isActive(nullptr));
    EXPECT_TRUE(reader->isValid(a.get()) && !reader->isValid(nullptr));
    reader->next();
    EXPECT_FALSE(reader->isValid(b));
    EXPECT_THROW_MSG(reader->getSharedPointer(b.get()), VoNullXMLStreamElementException, NoElement);
    EXPECT_EQ(reader->currentPath(), VoXMLPath("a"));
}

TEST(XMLReaderElements, KeepNameAndAttributesAfterTheirEndAndTheirReader)
{
    std::shared_ptr<VoXMLStreamElementReader> a;
    {
        TextReader reader("<a x='1'><b/></a>");
        a = reader->nextElement();
        a->children();
        VoXMLStreamElementReader byHand(&*reader); // takes the current token and is closed
        EXPECT_TRUE(byHand.name() == "a" && byHand.hasAttribute("x") && !reader->isValid(&byHand));
        EXPECT_THROW_MSG(byHand.nextChild(), VoInvalidXMLOperation, Closed);
    }
    EXPECT_EQ(a->name(), "a");
    EXPECT_EQ(a->readAttribute("x"), "1");
    EXPECT_THROW_MSG(a->nextChild(), VoInvalidXMLOperation, Closed);
    EXPECT_THROW_MSG(a->children().begin(), VoInvalidXMLOperation, Closed);
    EXPECT_THROW_MSG(a->readText(), VoInvalidXMLOperation, NotActive);
    EXPECT_THROW_MSG(VoXMLStreamElementReader(nullptr), VoNullPointerException, "Invalid parent");
}

TEST(XMLReaderAttributes, ComeByLocalNameInDocumentOrderAndAreReadByExactName)
{
    TextReader prefixed("<a xmlns:r='urn:r' xmlns:s='urn:s' r:id='1' id='2' s:id='3' r:k='4' s:k='5'/>");
    prefixed->nextElement();
    EXPECT_EQ(Listed(*prefixed->attributes()), (Names{"r:id=1", "id=2", "s:id=3", "k=4", "s:k=5"}));
    EXPECT_EQ(prefixed->currentElement()->attributes(), *prefixed->attributes());

    TextReader reader("<a Name='n' d='mpmZmZmZuT8=' bad='xyz'>AAAAAAAA8D8=</a>");
    auto a = reader->nextElement();
    EXPECT_EQ(a->readAttribute("Name"), "n");
    EXPECT_THROW_MSG(a->readAttribute("name"), VoUnknownXMLAttributeException, "Unknown attribute: name");
    EXPECT_EQ(a->readAttributeBase64("d"), 0.1);
    EXPECT_THROW_MSG(a->readAttributeBase64("e"), VoUnknownXMLAttributeException, "Unknown attribute: e");
    EXPECT_THROW_MSG(a->readAttributeBase64("bad"), VoInvalidParameterException, "Invalid string length");
    EXPECT_EQ(a->readTextBase64(), 1.0);
}

TEST(XMLAttributeSet, ReplacesInPlaceAndAnswersByExactName)
{
    VoXMLAttributeSet set;
    for (const auto& [name, value] : {std::pair("a", "1"), std::pair("b", "2"), std::pair("A", "3")})
        set.addAttribute(name, value);
    set.addAttribute(VoXMLAttribute("a", "4"));
    EXPECT_EQ(Listed(set), (Names{"a=4", "b=2", "A=3"}));
    EXPECT_EQ(set.readAttribute("c", "none"), "none");
    EXPECT_THROW_MSG(set.get("B"), VoUnknownXMLAttributeException, "Unknown attribute: B");
    set.removeAttribute("b");
    set.removeAttribute("b");
    EXPECT_TRUE(!set.hasAttribute("b") && set.size() == 2u);
    VoXMLAttributeSet moved = std::move(set);
    set = moved;
    EXPECT_EQ(set, moved);
    EXPECT_TRUE(VoXMLAttribute("a", "x") != VoXMLAttribute("a", "X"));
    EXPECT_THROW(*VoXMLAttributeSetPtr(), VoNullPointerException);
}

TEST(XMLReaderErrors, MalformedDocumentsThrowTheParsersTextAgainAndAgain)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", "Premature end of document."},
        {"<a>", "Premature end of document."},
        {"<a><b><c></b></a>", "Opening and ending tag mismatch."},
        {"<a/>junk", "Extra content at end of document."},
        {"<a/><b/>", "Extra content at end of document."},
        {"<?xml version='2.0'?><a/>", "Unsupported XML version."},
        {"<a>\xFF</a>", "Encountered incorrectly encoded content."},
        {"<a>&unknown;</a>", "Entity 'unknown' not declared."},
    };
    for (const auto& [document, message] : rows) {
        SCOPED_TRACE(document);
        TextReader reader(document);
        EXPECT_THROW_MSG(ReadAll(*reader), VoInvalidXMLException, message);
        EXPECT_THROW_MSG(reader->next(), VoInvalidXMLException, message);
        EXPECT_THROW_MSG(reader->nextElement(), VoInvalidXMLException, message);
        EXPECT_EQ(reader->errorString(), message);
    }
    TextReader skipping("<a><b><c></b></a>");
    auto a = skipping->nextElement();
    auto b = a->nextChild();
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW_MSG(a->nextChild(), VoInvalidXMLException, "Opening and ending tag mismatch.");
}

TEST(XMLReaderErrors, EntityBombsAreStopped)
{
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'aaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY e" + std::to_string(i) + " '";
        for (int copies = 0; copies < 10; ++copies)
            bomb += inner;
        bomb += "'>";
    }
    TextReader reader(bomb + "]><a>&e9;</a>");
    EXPECT_THROW(
        {
            reader->nextElement();
            reader->readText();
        },
        VoInvalidXMLException);
}

TEST(XMLReaderErrors, DeviceFailureIsRethrownWhereverItStrikes)
{
    const std::string document = "<a x='1'>" + std::string(40000, 't') + "<b>u</b></a>";
    for (std::size_t passed : {std::size_t(0), std::size_t(5), std::size_t(20000), document.size() - 1}) {
        MemoryDevice device(document, passed);
        VoXMLStreamReader reader(device);
        EXPECT_THROW_MSG(ReadAll(reader), VoIOException, "device failed");
        EXPECT_THROW_MSG(reader.nextElement(), VoIOException, "device failed");
    }
}

TEST(XMLReaderSources, AreClosedOnlyIfTheReaderOpenedThemAndRefusedIfTheyCannotBeRead)
{
    VoStringDevice device("<a/>");
    for (const VoIODevice::Mode before : {VoIODevice::Closed, VoIODevice::Read}) {
        EXPECT_EQ(device.open(before), before == VoIODevice::Read);
        {
            VoXMLStreamReader reader(device);
            EXPECT_EQ(device.mode(), VoIODevice::Read);
            EXPECT_EQ(reader.nextElement()->name(), "a");
        }
        EXPECT_EQ(device.mode(), before);
    }
    EXPECT_THROW(VoXMLStreamReader{VoFilePath("/nowhere/at/all.xml")}, VoFileNotFoundException);
    EXPECT_THROW_MSG(VoXMLStreamReader(VoSharedPtr<VoIODevice>()), VoNullPointerException, "");
    VoStringDevice writing;
    ASSERT_TRUE(writing.open(VoIODevice::Write));
    EXPECT_THROW_MSG(VoXMLStreamReader{writing}, VoIOException, "Device already open");
}

TEST(XMLReaderRestart, ReadsTheDocumentAgainAndClosesOldElements)
{
    for (const char* document : {"<a><b>t</b></a>", "<a><b>t</b>"}) { // also after an error
        TextReader reader(document);
        auto a = reader->nextElement();
        try {
            ReadAll(*reader);
        } catch (const VoInvalidXMLException&) {
        }
        reader->restart();
        EXPECT_FALSE(reader->isValid(a));
        EXPECT_EQ(reader->nextElement()->name(), "a");
        EXPECT_EQ(reader->nextElement()->readText(), "t");
    }
}

TEST(XMLReaderDiagnosis, RendersElementsBackAsXML)
{
    TextReader reader("<a><b x='&lt;1'>t&amp;<c/><!--n-->u</b><d/></a>");
    EXPECT_EQ(reader->toString(), "");
    EXPECT_THROW_MSG(reader->readAsText(), VoNullXMLStreamElementException, NoElement);
    auto a = reader->nextElement();
    auto b = reader->nextElement();
    EXPECT_EQ(reader->toString(), "<b x=\"&lt;1\">t&amp;<c></c>u</b>");
    EXPECT_FALSE(reader->isValid(b));
    EXPECT_EQ(reader->toString(), "");
    EXPECT_EQ(reader->readAsText(), "<d></d>");
    EXPECT_EQ(reader->next(), VoXMLStreamReader::EndDocument);
    EXPECT_THROW_MSG(reader->toString(), VoXMLException, "");
}

TEST(XMLReaderDepth, DeepNestingNeedsNoStack)
{
    const int depth = 200000;
    std::string document = xmltest::Nested(depth);
    for (int i = 0; i < depth; ++i)
        document += "</a>";
    TextReader reader(document);
    auto root = reader->nextElement();
    auto child = root->nextChild();
    EXPECT_EQ(root->nextChild(), nullptr); // skips 199,999 levels
    reader->restart();
    for (int i = 0; i < depth; ++i)
        ASSERT_NE(reader->nextElement(), nullptr);
    EXPECT_EQ(reader->nextElement(), nullptr);

    VoStringDevice device{VoString(document)};
    VoStreamXMLReader paths(device);
    std::vector<VoStreamXMLElementReader> kept; // whose paths together would take 40 GB
    while (auto element = paths.nextElement())
        kept.push_back(std::move(*element));
    const VoStreamXMLElementReader deepest = kept.back();
    EXPECT_EQ(kept[2].path(), VoXMLPath("a/a/a"));
    kept.clear();
    EXPECT_EQ(deepest.path().toString().size(), std::size_t(2 * depth - 1));
}

std::string InUtf16(const std::string& text, bool bigEndian)
{
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : text) {
        const char unit[] = {bigEndian ? '\0' : c, bigEndian ? c : '\0'};
        bytes.append(unit, 2);
    }
    return bytes;
}

TEST(XMLReaderLimits, AttributesAndNamespacesOfOneElementAreBounded)
{
    const auto times = [](int count, const std::string& begin, const std::string& end) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += begin + std::to_string(i) + end;
        return text;
    };
    const char* const attributes = "Too many attributes.";
    const char* const namespaces = "Too many namespace declarations.";
    const std::string prefixed = "<a xmlns:p='u'" + times(4096, " p:a", "='1'") + "/>";
    const struct
    {
        std::string document;
        const char* message; // null for one that is read
    } rows[] = {
        {"<a" + times(4096, " a", "='1'") + "/>", nullptr},
        {prefixed, nullptr},
        {"<a" + times(4097, " a", "='1'") + "/>", attributes},
        {"<a><b" + times(40000, "\n\ta", " = \">='\"") + "/></a>", attributes},
        {"<a><b" + times(40000, " a", "='\"= >'") + "/></a>", attributes},
        {"<!DOCTYPE a [<!ATTLIST a" + times(4097, " a", " CDATA '1'") + ">]><a/>", attributes},
        {"<a>" + times(9000, "<b x='", "'/>") + "</a>", nullptr},
        {"<a><!--" + times(9000, " a", "='1'") + "--><![CDATA[" + times(9000, " a", "='1'") + "]]>" +
             times(9000, " a", "='1'") + "</a>",
         nullptr},
        {"<r>" + times(4097, "<a xmlns:p", "='u'>"), namespaces},
    };
    for (const auto& row : rows) {
        for (const std::string& bytes : {row.document, InUtf16(row.document, true), InUtf16(row.document, false)}) {
            SCOPED_TRACE(row.document.substr(0, 100));
            TextReader reader(bytes);
            const auto readAll = [&] {
                auto root = reader->nextElement();
                while (root->nextChild()) { // and what lies in it is skipped
                }
            };
            if (row.message)
                EXPECT_THROW_MSG(readAll(), VoInvalidXMLException, row.message);
            else
                EXPECT_NO_THROW(readAll());
        }
    }
}

TEST(XMLPath, JoinsNamesAndCountsCase)
{
    for (const VoXMLPath& path : {VoXMLPath({"a", "b"}), VoXMLPath("a/b"), VoXMLPath("a").pushed("b")})
        EXPECT_EQ(path.toString(), "a/b");
    EXPECT_EQ(VoXMLPath().pushed("a"), VoXMLPath({"a"}));
    EXPECT_EQ((std::set<VoXMLPath>{"a/b", "A/b", "a/B", "a/b"}).size(), 3u);
    VoXMLPath path("a");
    path.push("b");
    const VoXMLPath moved = std::move(path);
    path = "c";
    EXPECT_EQ(path.pushed("d"), VoXMLPath("c/d"));
    EXPECT_EQ(std::hash<VoXMLPath>()(moved), std::hash<VoXMLPath>()(VoXMLPath("a/b")));
}

TEST(StreamXMLReader, ElementsKnowTheirPathAlsoAfterTheirEnd)
{
    VoStringDevice device("<a><b><c/></b><d/></a>");
    std::optional<VoStreamXMLReader> reader(device);
    VoStreamXMLElementReader a = *reader->nextElement();
    auto b = a.nextChild();
    auto c = b->nextChild();
    EXPECT_EQ(c->path(), VoXMLPath("a/b/c"));
    EXPECT_EQ(a.nextChild()->path(), VoXMLPath("a/d"));
    EXPECT_EQ(c->path(), VoXMLPath("a/b/c"));
    const VoStreamXMLElementReader moved = std::move(a);
    EXPECT_TRUE(!a.isOpen() && a.name() == "" && a.path() == VoXMLPath());
    reader.reset();
    EXPECT_TRUE(moved.path() == VoXMLPath("a") && b->path() == VoXMLPath("a/b"));
    EXPECT_THROW_MSG(b->nextChild(), VoInvalidXMLOperation, Closed);
    EXPECT_THROW_MSG(a.nextChild(), VoInvalidXMLOperation, Closed);
    EXPECT_THROW_MSG(a.readText(), VoInvalidXMLOperation, "Cannot read text from inactive element");
}

TEST(StreamXMLReader, VisitsChildrenAndAttributesAndTheirRest)
{
    VoStringDevice device("<a x='1' y='2'>t<b><c/></b><d/><e/></a>");
    VoStreamXMLReader reader(device);
    VoStreamXMLElementReader a = *reader.nextElement();
    EXPECT_TRUE(a.isActive());
    Names seen;
    a.forEachAttribute(
        [&](const VoString& name, const VoString& value) { seen.push_back((name + "=" + value).toStdString()); });
    EXPECT_EQ(seen, (Names{"x=1", "y=2"}));
    EXPECT_EQ(a.readText(), "t");
    EXPECT_EQ(a.nextChild()->name(), "b");
    EXPECT_THROW_MSG(a.readText(), VoInvalidXMLOperation, "Cannot read text from inactive element");
    seen.clear();
    a.forEachChild([&](VoAbstractXMLElementReader& child) { seen.push_back(child.name().toStdString()); });
    EXPECT_EQ(seen, (Names{"d", "e"}));
    EXPECT_TRUE(!a.isOpen() && !reader.nextElement().has_value());
}

TEST(StreamXMLReader, DocumentTypesAreRefusedOnRequest)
{
    const char* message = "Document type declarations are not allowed";
    VoStringDevice device("<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>");
    VoStreamXMLReader strict(device, VoStreamXMLReader::DocumentTypes::Refuse);
    EXPECT_THROW_MSG(strict.nextElement(), VoDocumentTypeException, message);
    EXPECT_THROW_MSG(strict.nextElement(), VoInvalidXMLException, message);
    EXPECT_THROW_MSG(strict.currentElement(), VoNullXMLStreamElementException, NoElement);
}

} // namespace
